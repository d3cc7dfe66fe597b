#include "faults/faults.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <new>
#include <pthread.h>
#include <semaphore.h>
#include <spawn.h>
#include <string>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <termios.h>
#include <unistd.h>

#include "support/library.h"
#include "wexelxi.h"

namespace fs = std::filesystem;

namespace {

enum Family {
    Allocation,
    Open,
    Read,
    Write,
    Stat,
    Directory,
    Removal,
    Terminal,
    Thread,
    Process,
    Spawn,
    Families
};

constexpr struct {
    const char *name;
    int error; // errno of a refused call
} kFamilies[Families] = {{"allocation", ENOMEM}, {"open", EMFILE},  {"read", EIO},
                         {"write", ENOSPC},      {"stat", EIO},     {"directory", ENOMEM},
                         {"removal", EPERM},     {"terminal", EIO}, {"thread", EAGAIN},
                         {"process", EAGAIN},    {"spawn", EAGAIN}};

// Which call is refused: the nth of its family from here on, and those behind it if it stays so.
struct Refusal {
    Family family = Families;
    unsigned nth = 0;
    bool stays = false;
    bool happened = false;
};
thread_local Refusal gRefusal;

bool Refuses(Family family)
{
    if (family != gRefusal.family)
        return false;
    const bool refuses = gRefusal.nth == 1 || (gRefusal.stays && gRefusal.happened);
    gRefusal.nth -= gRefusal.nth > 0;
    gRefusal.happened |= refuses;
    if (refuses)
        errno = kFamilies[family].error;
    return refuses;
}

} // namespace

#define CALL(family, result, name, parameters, arguments, refused)  \
    extern "C" result __real_##name parameters;                     \
    extern "C" result __wrap_##name parameters;                     \
    result __wrap_##name parameters                                 \
    {                                                               \
        return Refuses(family) ? refused : __real_##name arguments; \
    }
#include "faults/calls.def"
#undef CALL

void *operator new(size_t bytes)
{
    void *block = malloc(bytes);
    return block ? block : throw std::bad_alloc();
}

void *operator new(size_t bytes, const std::nothrow_t &) noexcept
{
    return malloc(bytes);
}

void operator delete(void *block) noexcept
{
    free(block);
}

void operator delete(void *block, size_t) noexcept
{
    free(block);
}

namespace {

using Files = std::map<std::string, std::string>;

// What lies in the folder: the bytes of files, where links lead, and "/" for folders.
Files FilesIn(const fs::path &folder)
{
    Files files;
    for (const auto &entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = fs::relative(entry.path(), folder);
        files[name] = entry.is_symlink()     ? "-> " + fs::read_symlink(entry.path()).string()
                      : entry.is_directory() ? "/"
                                             : ReadWholeFile(entry.path());
    }
    return files;
}

void PutBack(const fs::path &folder, const Files &files)
{
    for (const auto &entry : fs::directory_iterator(folder))
        fs::remove_all(entry.path());
    for (const auto &[name, bytes] : files) {
        if (bytes == "/")
            fs::create_directory(folder / name);
        else if (bytes.starts_with("-> "))
            fs::create_symlink(bytes.substr(3), folder / name);
        else
            WriteWholeFile(folder / name, bytes);
    }
}

// The first file that differs, but for new ones; "" if none does.
std::string FirstDifference(const Files &wanted, const Files &now)
{
    Files all = now;
    all.insert(wanted.begin(), wanted.end());
    const auto in = [](const Files &files, const std::string &name) {
        const auto at = files.find(name);
        return at == files.end() ? "(none)" : at->second;
    };
    for (const auto &[name, bytes] : all) {
        if (!name.starts_with("new") && in(now, name) != in(wanted, name))
            return name + " holds " + in(now, name).substr(0, 200);
    }
    return "";
}

// Connections of system libraries may stay, to be used again.
size_t DescriptorsButSockets()
{
    size_t count = 0;
    for (const auto &entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        count += !fs::read_symlink(entry.path(), ignored).string().starts_with("socket:");
    }
    return count;
}

bool MutexIsFree()
{
    auto *mutex = static_cast<pthread_mutex_t *>(gWexelxiCriticalSection);
    return !mutex || mutex->__data.__owner == 0;
}

// What the children tell their parent.
struct Report {
    bool refused;
    char complaint[500];
};

class Trial {
public:
    explicit Trial(const Scenario &scenario) : scenario_(scenario)
    {
        fs::current_path(library_.folder.path());
        scenario.prepare();
        before_ = wanted_ = FilesIn(".");
        void *shared = mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        report_ = new (shared) Report;
    }
    ~Trial()
    {
        fs::current_path("/");
        munmap(report_, sizeof(Report));
    }
    Trial(const Trial &) = delete;
    Trial &operator=(const Trial &) = delete;

    // Whether a call was refused, so that there may be a next one.
    bool Run(const Refusal &refusal)
    {
        PutBack(".", before_);
        *report_ = {};
        const pid_t child = fork();
        if (child == 0) {
            RunInChild(refusal);
            _exit(0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        std::string what = report_->complaint;
        if (WIFSIGNALED(status))
            what += std::string("ended by ") + strsignal(WTERMSIG(status));
        if (refusal.family == Families)
            wanted_ = FilesIn(".");
        if (!what.empty() || status != 0)
            ADD_FAILURE() << scenario_.name << ", "
                          << (refusal.family < Families ? kFamilies[refusal.family].name : "no")
                          << " call " << refusal.nth << (refusal.stays ? " and all behind it" : "")
                          << " refused: " << what << " (status " << status << ")";
        return report_->refused;
    }

private:
    void Complain(const std::string &what) const
    {
        strncat(report_->complaint, (what + ". ").c_str(), 400 - strlen(report_->complaint) % 400);
    }

    void RunInChild(const Refusal &refusal)
    {
        alarm(20);
        const size_t descriptors = DescriptorsButSockets();
        const auto searches = gFINDFILE;
        bool succeeded = false;
        gRefusal = refusal;
        try {
            succeeded = scenario_.succeeds();
        } catch (...) {
            gRefusal.family = Families;
            Complain("an exception came out");
        }
        report_->refused = gRefusal.happened;
        gRefusal.family = Families;
        const uint32_t error = GetLastError();
        fs::current_path(library_.folder.path());
        if (!succeeded && refusal.family == Families)
            Complain("failed with last error " + std::to_string(error));
        if (!succeeded && (refusal.family == Allocation || refusal.family == Spawn) &&
            error != ERROR_NOT_ENOUGH_MEMORY && error != scenario_.forNoHandle)
            Complain("no memory was told as last error " + std::to_string(error));
        if (pthread_getspecific(gCriticalSectionTLS) || !MutexIsFree())
            Complain("the lock is held");
        if (gFINDFILE != searches)
            Complain("a search is still open");
        if (refusal.family != Families) {
            Files now = FilesIn(".");
            // What cannot be removed stays, as does what a command writes that was not waited for,
            // and a file of which nothing can be known: the next write of the profile takes it
            // away.
            const char *staying = refusal.family == Stat ? ".wexelxi-new" : "";
            if (refusal.family == Removal || refusal.family == Process || refusal.family == Stat)
                std::erase_if(now, [&](const auto &file) {
                    return !before_.contains(file.first) && !wanted_.contains(file.first) &&
                           file.first.ends_with(staying);
                });
            const std::string difference = FirstDifference(wanted_, now);
            if (!difference.empty() && !FirstDifference(before_, now).empty())
                Complain(difference);
            PutBack(".", before_);
            if (!scenario_.succeeds())
                Complain("does not work afterwards");
            FreeLib();
            if (DescriptorsButSockets() > descriptors)
                Complain("a descriptor is still open");
        }
    }

    // The host's resource function knows everything.
    StartedLibrary library_{[](uint32_t, intptr_t, intptr_t, intptr_t) { return intptr_t{1}; }};
    const Scenario &scenario_;
    Files before_, wanted_;
    Report *report_;
};

} // namespace

void ExpectSafe(const Scenario &scenario)
{
    Trial trial(scenario);
    trial.Run({});
    for (int family = 0; family < Families; family++) {
        for (const bool stays : {false, true}) {
            unsigned nth = 1;
            while (trial.Run({static_cast<Family>(family), nth, stays}))
                nth++;
        }
    }
}
