#include "platform/Process.h"

#include <io.h>
#include <windows.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace orbisk::platform {

namespace {

bool goesNowhere(std::FILE* stream) {
    return _get_osfhandle(_fileno(stream)) < 0;
}

/// A windowed program has no console. One that is called from a console with options was asked for
/// a text or a picture, not for a window: it answers there, unless its output was redirected.
void answerInConsole() {
    const auto isOption = [](const char* argument) { return argument[0] == '-'; };
    if (std::none_of(__argv + 1, __argv + __argc, isOption) ||
        !AttachConsole(ATTACH_PARENT_PROCESS))
        return;
    for (std::FILE* stream : {stdout, stderr})
        if (goesNowhere(stream))
            std::freopen("CONOUT$", "w", stream);
}

} // namespace

void settleProcess() {
    answerInConsole();
    std::setlocale(LC_ALL, "");
    settleLocale();
}

void settleLocale() {
    std::setlocale(LC_NUMERIC, "C");
    // The system takes narrow file names in its own code page, while the interface's language has
    // just brought another one.
    std::setlocale(LC_CTYPE, ("." + std::to_string(GetACP())).c_str());
}

} // namespace orbisk::platform
