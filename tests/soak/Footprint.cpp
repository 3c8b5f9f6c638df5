#include "soak/Footprint.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <X11/Xlib.h>
#include <X11/extensions/XRes.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORBISK_SANITIZER_HEAP 1
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace orbisk::test {

namespace {

namespace fs = std::filesystem;

constexpr double bytesPerKibibyte = 1024.0;
/// Left out: views without a pixmap of their own, which the drawing library makes. They grew from
/// 90 to 160 over 238 models, ever more slowly, while all else stayed the same.
constexpr const char* storedByCairo = "PICTURE";

std::string nameOf(Display* display, Atom atom) {
    char* name = XGetAtomName(display, atom);
    const std::string copy = name ? name : "";
    XFree(name);
    return copy;
}

double entryCount(const char* folder) {
    return static_cast<double>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

double heapBytes() {
#ifdef ORBISK_SANITIZER_HEAP
    return static_cast<double>(__sanitizer_get_current_allocated_bytes());
#else
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd);
#endif
}

double residentKibibytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (word == "VmRSS:") {
            double kibibytes = 0.0;
            status >> kibibytes;
            return kibibytes;
        }
    throw std::runtime_error("the system does not tell what is in memory");
}

} // namespace

const std::vector<FootprintFigure>& footprintFigures() {
    static const std::vector<FootprintFigure> figures = {
        {"heap, KiB", &Footprint::heapKibibytes},
        {"resident, KiB", &Footprint::residentKibibytes},
        {"threads", &Footprint::threads},
        {"open files", &Footprint::files},
        {"X resources", &Footprint::serverResources},
    };
    return figures;
}

FootprintMeter::FootprintMeter() : m_display(XOpenDisplay(nullptr)), m_process(getpid()) {
    int event = 0;
    int error = 0;
    if (!m_display || !XResQueryExtension(m_display, &event, &error))
        throw std::runtime_error("no display that counts resources");
}

FootprintMeter::~FootprintMeter() {
    XCloseDisplay(m_display);
}

Footprint FootprintMeter::take() const {
    malloc_trim(0);
    Footprint footprint;
    footprint.heapKibibytes = heapBytes() / bytesPerKibibyte;
    footprint.residentKibibytes = residentKibibytes();
    footprint.threads = entryCount("/proc/self/task");
    footprint.files = entryCount("/proc/self/fd");
    footprint.serverResources = serverResources();
    return footprint;
}

/// Of all connections that this process has to the server.
double FootprintMeter::serverResources() const {
    int clientCount = 0;
    XResClient* clients = nullptr;
    XResQueryClients(m_display, &clientCount, &clients);
    long count = 0;
    for (int i = 0; i < clientCount; ++i) {
        XResClientIdSpec which{clients[i].resource_base, XRES_CLIENT_ID_PID_MASK};
        long idCount = 0;
        XResClientIdValue* ids = nullptr;
        XResQueryClientIds(m_display, 1, &which, &idCount, &ids);
        const bool isOurs = idCount > 0 && XResGetClientPid(ids) == m_process;
        XResClientIdsDestroy(idCount, ids);
        if (!isOurs)
            continue;
        int typeCount = 0;
        XResType* types = nullptr;
        XResQueryClientResources(m_display, clients[i].resource_base, &typeCount, &types);
        for (int k = 0; k < typeCount; ++k)
            if (nameOf(m_display, types[k].resource_type) != storedByCairo)
                count += static_cast<long>(types[k].count);
        XFree(types);
    }
    XFree(clients);
    return static_cast<double>(count);
}

double lowestOf(const std::vector<Footprint>& footprints, std::size_t begin, std::size_t end,
                double Footprint::*field) {
    double lowest = footprints.at(begin).*field;
    for (std::size_t i = begin; i < end; ++i)
        lowest = std::min(lowest, footprints.at(i).*field);
    return lowest;
}

} // namespace orbisk::test
