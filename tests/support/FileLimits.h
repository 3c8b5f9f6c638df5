#pragma once

#include <sys/resource.h>
#include <sys/types.h>

namespace orbisk::test {

/// While it lives, no file can grow beyond so many bytes: writing stops as on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes);
    ~FullDisk();

    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_former{};
    void (*m_formerHandler)(int) = nullptr;
};

/// While it lives, the superuser's rights are put down, since they open every file.
class OrdinaryUser {
public:
    OrdinaryUser();
    ~OrdinaryUser();

    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

    /// Whether file permissions count now.
    bool holds() const;

    /// The user that files have to belong to.
    static uid_t id();

private:
    uid_t m_former;
};

} // namespace orbisk::test
