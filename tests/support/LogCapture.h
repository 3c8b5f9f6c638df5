#pragma once

#include <wx/log.h>

#include <string>
#include <vector>

namespace orbisk::test {

/// Takes what the toolkit logs while it lives, so that it can be looked at and no box shows it.
class LogCapture : public wxLog {
public:
    LogCapture() : m_former(wxLog::SetActiveTarget(this)) {}

    ~LogCapture() override { wxLog::SetActiveTarget(m_former); }

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// Warnings and errors, in the order in which they came.
    const std::vector<std::string>& messages() const { return m_messages; }

protected:
    void DoLogRecord(wxLogLevel level, const wxString& message, const wxLogRecordInfo&) override {
        if (level <= wxLOG_Warning)
            m_messages.push_back(message.utf8_string());
    }

private:
    wxLog* m_former;
    std::vector<std::string> m_messages;
};

} // namespace orbisk::test
