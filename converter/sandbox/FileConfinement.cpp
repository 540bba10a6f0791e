#include "sandbox/FileConfinement.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tnconvert {

namespace {

// The system's header may be older than the system. A version of the interface that knows less than
// these takes the rest for zeros, which they are for it.
struct RulesetAttributes {
    std::uint64_t files = 0;
    std::uint64_t network = 0;
    std::uint64_t scopes = 0;
};

using Rights = std::uint64_t;
constexpr Rights readFile = LANDLOCK_ACCESS_FS_READ_FILE;
constexpr Rights readRights = readFile | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr Rights writeRights =
    LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_REMOVE_FILE;

/// What is taken away, by the version of the interface that can first do so.
constexpr struct {
    long version;
    RulesetAttributes attributes;
} takenAway[] = {
    {1, {(LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1, 0, 0}}, // all of the first version
    {2, {Rights(1) << 13, 0, 0}}, // moves to another directory
    {3, {Rights(1) << 14, 0, 0}}, // truncation
    {4, {0, 3, 0}}, // TCP, to wait for calls and to call
    {5, {Rights(1) << 15, 0, 0}}, // control of devices
    {6, {0, 0, 3}}, // signals and abstract sockets to processes that are not confined alike
};

long version()
{
    return syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
}

} // namespace

FileConfinement::FileConfinement()
{
    const long known = version();
    RulesetAttributes attributes;
    for (const auto &[since, more] : takenAway) {
        if (since > known)
            break;
        attributes.files |= more.files;
        attributes.network |= more.network;
        attributes.scopes |= more.scopes;
    }
    if (attributes.files != 0)
        m_ruleset = int(syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0));
}

FileConfinement::~FileConfinement()
{
    if (m_ruleset >= 0)
        close(m_ruleset);
}

bool FileConfinement::isAvailable()
{
    return version() > 0;
}

void FileConfinement::allowReading(const std::string &path)
{
    allow(path, readRights);
}

void FileConfinement::allowWriting(const std::string &path)
{
    allow(path, writeRights);
}

void FileConfinement::allow(const std::string &path, std::uint64_t rights)
{
    const int file = open(path.c_str(), O_PATH | O_CLOEXEC);
    if (file < 0)
        return;
    struct stat facts { };
    // What only directories have makes the system refuse the rule for a file.
    if (fstat(file, &facts) == 0 && !S_ISDIR(facts.st_mode))
        rights &= readFile;
    const landlock_path_beneath_attr rule{rights, file};
    syscall(SYS_landlock_add_rule, m_ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    close(file);
}

bool FileConfinement::enter()
{
    return m_ruleset >= 0 && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
        && syscall(SYS_landlock_restrict_self, m_ruleset, 0) == 0;
}

} // namespace tnconvert
