#pragma once

#include <string>

namespace orbisk {

/// Where the tip is asked for.
struct TipServer {
    std::string host;
    unsigned short port = 0; ///< 0 for the one that is usual for web servers, 80
};

/// The tip server of the frames to come: one record for the process, which holds the build's choice
/// at first. Main thread.
TipServer& tipServer();

/// The address that the URL dialog proposes each time it opens: one text for the process, which
/// holds the build's choice at first. Main thread.
std::string& storedUrl();

} // namespace orbisk
