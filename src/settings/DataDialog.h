#pragma once

#include <wx/dialog.h>

#include <array>
#include <cstddef>

class wxCheckBox;
class wxNotebook;
class wxPanel;
class wxStaticText;
class wxTextCtrl;

namespace orbisk {

/// The "Options" dialog: angle of view, parameters of the roam, and whether the sky is shown. It is
/// made for one showing, filled from the process's records; they change by `transfer` alone. What
/// is typed is read leniently: the number it begins with counts, and nothing is refused. Main
/// thread.
class DataDialog : public wxDialog {
public:
    explicit DataDialog(wxWindow* parent, wxWindowID id = wxID_ANY,
                        const wxPoint& pos = wxDefaultPosition, const wxSize& size = wxDefaultSize);

    /// Writes what the controls show into the settings and the roam parameters. To be called when
    /// the dialog has ended with OK.
    void transfer() const;

private:
    enum Row : std::size_t { fovyRow, heightRow, speedRow, rollRow, pitchRow, yawRow, rowCount };

    void buildParamPage();
    void buildOptionsPage();
    void fill();
    void show(Row row, double value);
    double numberIn(Row row) const;

    wxNotebook* m_notebook = nullptr;
    wxPanel* m_paramPage = nullptr;
    wxPanel* m_optionsPage = nullptr;
    std::array<wxStaticText*, rowCount> m_labels{};
    std::array<wxTextCtrl*, rowCount> m_texts{};
    wxStaticText* m_note = nullptr;
    wxStaticText* m_skyboxLabel = nullptr;
    wxCheckBox* m_skyboxCheck = nullptr;
};

} // namespace orbisk
