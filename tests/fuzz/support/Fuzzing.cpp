#include "support/Fuzzing.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

namespace orbisk::fuzz {

namespace {

namespace fs = std::filesystem;

using DoubleLimits = std::numeric_limits<double>;

constexpr double smallWhole = 16.0;
/// Those that arithmetic treats in a way of their own, or that sit at a limit of something.
constexpr std::array<double, 14> specials = {
    0.0,
    -0.0,
    DoubleLimits::infinity(),
    -DoubleLimits::infinity(),
    DoubleLimits::quiet_NaN(),
    DoubleLimits::max(),
    DoubleLimits::lowest(),
    DoubleLimits::min(),
    DoubleLimits::denorm_min(),
    1e-6,
    2147483648.0,
    -2147483649.0,
    512345.678,
    4e6,
};

template <class Value>
Value valueOf(const std::string& raw) {
    Value value{};
    std::memcpy(&value, raw.data(), std::min(raw.size(), sizeof value));
    return value;
}

class WorkingFolder {
public:
    WorkingFolder() {
        std::string pattern = (fs::temp_directory_path() / "orbisk-fuzz-XXXXXX").string();
        require(mkdtemp(pattern.data()) != nullptr, "no temporary folder");
        m_path = pattern;
        m_former = fs::current_path();
        fs::current_path(m_path);
    }

    ~WorkingFolder() {
        std::error_code ignored;
        fs::current_path(m_former, ignored);
        fs::remove_all(m_path, ignored);
    }

    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

    const fs::path& path() const { return m_path; }

private:
    fs::path m_path;
    fs::path m_former;
};

} // namespace

void require(bool holds, const char* what) {
    if (holds)
        return;
    std::fprintf(stderr, "not as it should be: %s\n", what);
    std::abort();
}

std::uint8_t Bytes::byte() {
    if (m_left == 0)
        return 0;
    --m_left;
    return *m_next++;
}

std::size_t Bytes::below(std::size_t count) {
    constexpr std::size_t valuesOfByte = 256;
    std::size_t value = byte();
    if (count > valuesOfByte)
        value = value * valuesOfByte + byte();
    return value % count;
}

double Bytes::number() {
    const std::uint8_t kind = byte();
    switch (kind % 4) {
    case 0:
        return specials[kind / 4 % specials.size()];
    case 1:
        return static_cast<double>(byte()) - smallWhole;
    case 2:
        return static_cast<double>(valueOf<float>(text(sizeof(float))));
    default:
        return valueOf<double>(text(sizeof(double)));
    }
}

std::string Bytes::text(std::size_t size) {
    const std::size_t taken = std::min(size, m_left);
    std::string text(reinterpret_cast<const char*>(m_next), taken);
    m_next += taken;
    m_left -= taken;
    return text;
}

const fs::path& workingFolder() {
    static const WorkingFolder folder;
    return folder.path();
}

} // namespace orbisk::fuzz
