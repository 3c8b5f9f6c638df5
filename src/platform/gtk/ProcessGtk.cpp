#include "platform/Process.h"

#include <langinfo.h>

#include <clocale>
#include <cstdlib>
#include <cstring>

namespace orbisk::platform {

namespace {

bool onlyAsciiFileNames() {
    return std::strcmp(nl_langinfo(CODESET), "ANSI_X3.4-1968") == 0;
}

} // namespace

void settleProcess() {
    // The packaged GL canvas needs GLX, so a Wayland session shows the program through X11, unless
    // the user asked for something else.
    setenv("GDK_BACKEND", "x11", 0);
    std::setlocale(LC_ALL, "");
    settleLocale();
}

void settleLocale() {
    std::setlocale(LC_NUMERIC, "C");
    if (onlyAsciiFileNames())
        std::setlocale(LC_CTYPE, "C.UTF-8");
}

} // namespace orbisk::platform
