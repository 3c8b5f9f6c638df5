#include "support/FileLimits.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

namespace orbisk::test {

namespace {
constexpr uid_t nobody = 65534;
}

FullDisk::FullDisk(rlim_t bytes) : m_formerHandler(std::signal(SIGXFSZ, SIG_IGN)) {
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_former), 0);
    rlimit limit = m_former;
    limit.rlim_cur = bytes;
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

FullDisk::~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &m_former);
    std::signal(SIGXFSZ, m_formerHandler);
}

OrdinaryUser::OrdinaryUser() : m_former(geteuid()) {
    if (m_former == 0 && seteuid(nobody) != 0)
        std::perror("seteuid");
}

OrdinaryUser::~OrdinaryUser() {
    if (seteuid(m_former) != 0)
        std::perror("seteuid");
}

bool OrdinaryUser::holds() const {
    return geteuid() != 0;
}

uid_t OrdinaryUser::id() {
    return geteuid() == 0 ? nobody : geteuid();
}

} // namespace orbisk::test
