#include "faults/faults.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <malloc.h>
#include <map>
#include <new>
#include <pthread.h>
#include <random>
#include <semaphore.h>
#include <spawn.h>
#include <string>
#include <sys/file.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <termios.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "support/library.h"
#include "wexelxi.h"

extern "C" size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

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

// The errno of a refused call.
constexpr int kErrors[Families] = {ENOMEM, EMFILE, EIO,    ENOSPC, EIO,   ENOMEM,
                                   EPERM,  EIO,    EAGAIN, EAGAIN, EAGAIN};

// Which call is refused: the nth of its family from here on, and those behind it if it stays so.
struct Refusal {
    int family = Families;
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
        errno = kErrors[family];
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

// That of the platform's C++ library lies behind the linker's back.
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

// Blocks that the platform's allocator keeps at hand would count as in use.
[[gnu::constructor]] void StartAgainWithoutCache(int, char **arguments)
{
    if (!getenv("GLIBC_TUNABLES")) {
        setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0", 1);
        execv("/proc/self/exe", arguments);
    }
}

// The host's resource function.
intptr_t KnowsAll(uint32_t, intptr_t, intptr_t, intptr_t)
{
    return 1;
}

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

void Empty(const fs::path &folder)
{
    for (const auto &entry : fs::directory_iterator(folder))
        fs::remove_all(entry.path());
}

// Connections of system libraries may stay, to be used again.
size_t DescriptorsButSockets()
{
    const fs::directory_iterator all("/proc/self/fd");
    return static_cast<size_t>(std::count_if(begin(all), end(all), [](const auto &entry) {
        std::error_code ignored;
        return !fs::read_symlink(entry.path(), ignored).string().starts_with("socket:");
    }));
}

// A scenario on its files, in a process that ends with what it has to tell.
class Trial {
public:
    explicit Trial(const Scenario &scenario) : scenario_(scenario)
    {
        fs::current_path(library_.folder.path());
        scenario.prepare();
        fs::copy(".", before_.path(), kWhole);
    }
    ~Trial() { fs::current_path("/"); }
    Trial(const Trial &) = delete;
    Trial &operator=(const Trial &) = delete;

    // Whether a call was refused, so that there may be a next one.
    bool Run(const Refusal &refusal)
    {
        PutBack();
        const pid_t child = fork();
        if (child == 0) {
            alarm(20);
            RunInChild(refusal);
            _exit(refused_ + 2 * faults_);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status & ~0x100, 0)
            << scenario_.name << ", call " << refusal.nth << " of family " << refusal.family
            << (refusal.stays ? " and all behind it" : "") << " refused";
        if (refusal.family == Families)
            wanted_ = FilesIn(".");
        return status == 0x100;
    }

private:
    static constexpr auto kWhole = fs::copy_options::recursive | fs::copy_options::copy_symlinks;

    void Complain(const std::string &what)
    {
        fprintf(stderr, "%s: %s\n", scenario_.name, what.c_str());
        faults_ = true;
    }

    void PutBack() const
    {
        fs::current_path(library_.folder.path());
        Empty(".");
        fs::copy(before_.path(), ".", kWhole);
    }

    bool Try(const Refusal &refusal)
    {
        bool succeeded = false;
        gRefusal = refusal;
        try {
            succeeded = scenario_.succeeds();
        } catch (...) {
            gRefusal.family = Families;
            Complain("an exception came out");
        }
        gRefusal.family = Families;
        while (wait(nullptr) > 0) { // for commands that nobody waited for
        }
        return succeeded;
    }

    void RunInChild(const Refusal &refusal)
    {
        const size_t descriptors = DescriptorsButSockets();
        const bool succeeded = Try(refusal);
        const uint32_t error = GetLastError();
        refused_ = gRefusal.happened;
        if (!refused_ && refusal.family != Families)
            return; // the last one was refused already
        const bool isForMemory = refusal.family == Allocation || refusal.family == Spawn;
        if (!succeeded &&
            (refusal.family == Families ||
             (isForMemory && error != ERROR_NOT_ENOUGH_MEMORY && error != scenario_.forNoHandle)))
            Complain("failed with last error " + std::to_string(error));
        auto *mutex = static_cast<pthread_mutex_t *>(gWexelxiCriticalSection);
        if (TlsGetValue(gCriticalSectionTLS) || (mutex && mutex->__data.__owner != 0))
            Complain("the lock is held");
        if (gFINDFILE != 0)
            Complain("a search is still open");
        if (refusal.family != Families)
            ExpectFiles(refusal.family);
        ExpectNoGrowth(refusal);
        PutBack();
        if (!Try({}))
            Complain("does not work afterwards");
        FreeLib();
        if (DescriptorsButSockets() > descriptors)
            Complain("a descriptor is still open");
    }

    // What cannot be removed stays, as does what a command writes that was not waited for, and a
    // file of which nothing can be known: the next write of the profile takes it away.
    bool MayStay(const std::string &name, int family) const
    {
        return name.starts_with("new") || family == Removal || family == Process ||
               (family == Stat && name.ends_with(".wexelxi-new"));
    }

    void ExpectFiles(int family)
    {
        fs::current_path(library_.folder.path());
        Files now = FilesIn("."), before = FilesIn(before_.path()), all = now;
        all.insert(before.begin(), before.end());
        for (const auto &[name, bytes] : all) {
            const bool isOther = !before.contains(name) && !wanted_.contains(name);
            if (now[name] != before[name] && now[name] != wanted_[name] &&
                !(isOther && MayStay(name, family)))
                Complain(name + " holds " + now[name].substr(0, 200));
        }
    }

    // A further round takes no more memory, once what is kept for the next one is full.
    void ExpectNoGrowth(const Refusal &refusal)
    {
        bool grows = true;
        for (int round = 0; grows && round < 100; round++) {
            PutBack();
            const size_t before = mallinfo2().uordblks + scenario_.keeps;
            Try(refusal);
            grows = mallinfo2().uordblks > before;
        }
        if (grows)
            Complain("memory stays in use");
    }

    StartedLibrary library_{KnowsAll};
    const Scenario &scenario_;
    const ScratchFolder before_;
    Files wanted_;
    bool refused_ = false, faults_ = false;
};

size_t BytesInUse()
{
    return __sanitizer_get_current_allocated_bytes ? __sanitizer_get_current_allocated_bytes()
                                                   : mallinfo2().uordblks;
}

using Time = std::chrono::steady_clock::time_point;

void RunUntil(Time end, std::span<const Scenario> scenarios, unsigned seed)
{
    const ScratchFolder folder;
    gFolder = folder.path().c_str();
    std::minstd_rand random(seed);
    while (std::chrono::steady_clock::now() < end && !testing::Test::HasFailure()) {
        const Scenario &scenario = scenarios[random() % scenarios.size()];
        if (scenario.alone)
            continue;
        Empty(gFolder);
        scenario.prepare();
        EXPECT_TRUE(scenario.succeeds()) << scenario.name << ", last error " << GetLastError();
    }
}

void RunThreadsUntil(Time end, std::span<const Scenario> scenarios)
{
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 4; i++)
        threads.emplace_back(RunUntil, end, scenarios, i + 1);
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace

void ExpectSafeTogether(std::span<const Scenario> scenarios)
{
    constexpr size_t kGrowthAllowed = 256 * 1024; // caches fill up; a leak passes this in seconds
    const StartedLibrary library(KnowsAll);
    const char *text = getenv("SOAK_SECONDS");
    const std::chrono::seconds length(text ? atoi(text) : 1);
    const Time start = std::chrono::steady_clock::now();
    RunThreadsUntil(start + length / 4, scenarios); // caches fill up
    const size_t descriptors = OpenDescriptors();
    const size_t before = BytesInUse();
    RunThreadsUntil(start + length, scenarios);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(gFINDFILE, 0u);
    EXPECT_LT(BytesInUse(), before + kGrowthAllowed);
}

void ExpectSafe(const Scenario &scenario)
{
    Trial trial(scenario);
    trial.Run({});
    for (int family = 0; family < Families; family++) {
        for (const bool stays : {false, true}) {
            unsigned nth = 1;
            while (trial.Run({family, nth, stays}))
                nth++;
        }
    }
}
