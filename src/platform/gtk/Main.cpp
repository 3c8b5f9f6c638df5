// The executable on GTK systems. Linking the program's libraries takes about as long as it takes
// the toolkit to read its theme, so the program is a library, too, and both are done at
// the same time (docs/decisions/starting.md). It uses nothing but the C library: whatever it were
// linked to would be searched first for each name that the program's libraries use.

#include "platform/Process.h"

#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char* toolkitName = "libgtk-3.so.0";
constexpr char programName[] = "orbisk_program.so";
constexpr const char* entryName = "orbiskRunProgram";

using ProgramEntry = int (*)(int, char**);

/// What is wanted of the toolkit.
class Toolkit {
public:
    /// Looks all functions up at once: while the program is being loaded, nothing can be looked up.
    explicit Toolkit(void* library) {
        if (!library)
            return;
        find(library, "XInitThreads", m_shareConnections);
        find(library, "gtk_disable_setlocale", m_disableSetlocale);
        find(library, "gtk_init_check", m_initCheck);
        find(library, "gtk_window_new", m_newWindow);
        find(library, "gtk_widget_destroy", m_destroy);
    }

    bool isThere() const {
        return m_shareConnections && m_disableSetlocale && m_initCheck && m_newWindow && m_destroy;
    }

    /// Has it leave the C library's locale as it is. Before its start.
    void disableSetlocale() const { m_disableSetlocale(); }

    /// @return whether it is connected to the display.
    bool start(int argc, char** argv) const {
        m_shareConnections();
        // It wants to know the program's name, and may change what it is given, which lives as long
        // as the process.
        const auto count = static_cast<std::size_t>(argc) + 1;
        auto** arguments = static_cast<char**>(std::calloc(count, sizeof(char*)));
        if (!arguments)
            return false;
        std::copy_n(argv, count, arguments);
        return m_initCheck(&argc, &arguments);
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

    int (*m_shareConnections)() = nullptr;
    void (*m_disableSetlocale)() = nullptr;
    int (*m_initCheck)(int* argc, char*** argv) = nullptr;
    void* (*m_newWindow)(int type) = nullptr;
    void (*m_destroy)(void* widget) = nullptr;
};

/// Whether the toolkit was told here all that it is to be told before it starts.
bool isToolkitPrepared = false;

/// Who gives options wants a text or a picture; what follows `--` is none.
bool wantsWindow(int argc, char** argv) {
    char** const end = argv + argc;
    char** const option =
        std::find_if(argv + 1, end, [](const char* word) { return word[0] == '-'; });
    return option == end || std::strcmp(*option, "--") == 0;
}

[[noreturn]] void fail(const char* message) {
    std::fprintf(stderr, "orbisk: %s\n", message);
    std::exit(EXIT_FAILURE);
}

/// The program's library, beside the executable.
void* openProgram() {
    char file[PATH_MAX + sizeof(programName)];
    const ssize_t length = readlink("/proc/self/exe", file, PATH_MAX);
    if (length <= 0)
        fail("its own folder cannot be found");
    file[length] = '\0';
    std::strcpy(std::strrchr(file, '/') + 1, programName);
    return dlopen(file, RTLD_LAZY | RTLD_GLOBAL);
}

void* findEntry() {
    void* program = openProgram();
    return program ? dlsym(program, entryName) : nullptr;
}

/// For a thread, which leaves it to the main one to end the process.
void* findEntryOnThread(void*) {
    return findEntry();
}

ProgramEntry loadProgram() {
    void* entry = findEntry();
    if (!entry)
        fail(dlerror());
    return reinterpret_cast<ProgramEntry>(entry);
}

/// Where the toolkit cannot be started, the program will find that out for itself and report it.
ProgramEntry startToolkitAndLoadProgram(int argc, char** argv) {
    const Toolkit toolkit(dlopen(toolkitName, RTLD_LAZY | RTLD_LOCAL));
    if (!toolkit.isThere())
        return loadProgram();
    toolkit.disableSetlocale();
    isToolkitPrepared = true;
    const bool isStarted = toolkit.start(argc, argv);
    // Not sooner: the toolkit's start looks at the libraries that are there, and would wait.
    pthread_t loading{};
    if (!isStarted || pthread_create(&loading, nullptr, findEntryOnThread, nullptr) != 0)
        return loadProgram();
    toolkit.readTheme();
    void* entry = nullptr;
    pthread_join(loading, &entry);
    return entry ? reinterpret_cast<ProgramEntry>(entry) : loadProgram();
}

} // namespace

/// The program's windows library calls this before it starts the toolkit, which would warn that it
/// comes too late where its start was tried here.
extern "C" __attribute__((visibility("default"))) void gtk_disable_setlocale() {
    const Toolkit toolkit(isToolkitPrepared ? nullptr : dlopen(toolkitName, RTLD_LAZY));
    if (toolkit.isThere())
        toolkit.disableSetlocale();
}

int main(int argc, char** argv) {
    orbisk::platform::settleProcess();
    const ProgramEntry program =
        wantsWindow(argc, argv) ? startToolkitAndLoadProgram(argc, argv) : loadProgram();
    return program(argc, argv);
}
