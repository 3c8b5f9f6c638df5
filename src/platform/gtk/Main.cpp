// The executable on GTK systems. Linking the program's libraries takes about as long as it takes
// the toolkit to read its theme, so the program is a library, too, and both are done at
// the same time (docs/decisions/starting.md).

#include "platform/Process.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <future>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr const char* toolkitName = "libgtk-3.so.0";
constexpr const char* programName = "orbisk_program.so";
constexpr const char* entryName = "orbiskRunProgram";

using ProgramEntry = int (*)(int, char**);

/// What is wanted of the toolkit. Were the executable linked to it, each name that the program uses
/// would be looked for in the toolkit's seventy libraries first.
class Toolkit {
public:
    /// Looks all functions up at once: while the program is being loaded, nothing can be looked up.
    explicit Toolkit(void* library) {
        if (!library)
            return;
        find(library, "gtk_disable_setlocale", m_disableSetlocale);
        find(library, "gtk_init_check", m_initCheck);
        find(library, "gtk_window_new", m_newWindow);
        find(library, "gtk_widget_destroy", m_destroy);
    }

    bool isThere() const { return m_disableSetlocale && m_initCheck && m_newWindow && m_destroy; }

    /// Has it leave the C library's locale as it is. Before its start.
    void disableSetlocale() const { m_disableSetlocale(); }

    /// @return whether it is connected to the display.
    bool start(int argc, char** argv) const {
        // It wants to know the program's name, and may change what it is given.
        std::vector<char*> arguments(argv, argv + argc + 1);
        char** rest = arguments.data();
        return m_initCheck(&argc, &rest);
    }

    /// Its theme is read when the first window is made. Its fonts are not: that needs threads, and
    /// none begins while the program is being loaded.
    void readTheme() const {
        constexpr int topLevel = 0;
        m_destroy(m_newWindow(topLevel));
    }

private:
    template <typename Function>
    static void find(void* library, const char* name, Function*& function) {
        function = reinterpret_cast<Function*>(dlsym(library, name));
    }

    void (*m_disableSetlocale)() = nullptr;
    int (*m_initCheck)(int* argc, char*** argv) = nullptr;
    void* (*m_newWindow)(int type) = nullptr;
    void (*m_destroy)(void* widget) = nullptr;
};

bool isToolkitStarted = false;

/// Who gives options wants a text or a picture; what follows `--` is none.
bool wantsWindow(int argc, char** argv) {
    const std::vector<std::string_view> arguments(argv + 1, argv + argc);
    const auto option = std::find_if(arguments.begin(), arguments.end(), [](std::string_view word) {
        return word.substr(0, 1) == "-";
    });
    return option == arguments.end() || *option == "--";
}

/// @throws std::runtime_error, and what the file system throws.
ProgramEntry loadProgram() {
    const auto file = std::filesystem::read_symlink("/proc/self/exe").replace_filename(programName);
    void* program = dlopen(file.c_str(), RTLD_LAZY | RTLD_GLOBAL);
    void* entry = program ? dlsym(program, entryName) : nullptr;
    if (!entry)
        throw std::runtime_error(dlerror());
    return reinterpret_cast<ProgramEntry>(entry);
}

/// Where the toolkit cannot be started, the program will find that out for itself and report it.
ProgramEntry startToolkitAndLoadProgram(int argc, char** argv) {
    const Toolkit toolkit(dlopen(toolkitName, RTLD_LAZY | RTLD_LOCAL));
    if (!toolkit.isThere())
        return loadProgram();
    toolkit.disableSetlocale();
    isToolkitStarted = toolkit.start(argc, argv);
    if (!isToolkitStarted)
        return loadProgram();
    // Not sooner: the toolkit's start looks at the libraries that are there, and would wait.
    auto program = std::async(std::launch::async, loadProgram);
    toolkit.readTheme();
    return program.get();
}

} // namespace

/// The program's windows library calls this before it starts the toolkit, which would warn that it
/// comes too late where the toolkit has been started here.
extern "C" __attribute__((visibility("default"))) void gtk_disable_setlocale() {
    const Toolkit toolkit(isToolkitStarted ? nullptr : dlopen(toolkitName, RTLD_LAZY));
    if (toolkit.isThere())
        toolkit.disableSetlocale();
}

int main(int argc, char** argv) {
    orbisk::platform::prepareProcess();
    ProgramEntry program = nullptr;
    try {
        program = wantsWindow(argc, argv) ? startToolkitAndLoadProgram(argc, argv) : loadProgram();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orbisk: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return program(argc, argv);
}
