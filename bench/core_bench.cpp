// The lock, last error, critical sections and strings.
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fnmatch.h>
#include <glib.h>
#include <mutex>
#include <pthread.h>
#include <string>
#include <strings.h>

#include "host.h"
#include "rows.h"

namespace {

void LockRows()
{
    pthread_key_t key;
    pthread_key_create(&key, nullptr);
    const auto slot = Do("two slot reads and writes", [key] {
        for (int i = 0; i < 2; i++) {
            void *value = pthread_getspecific(key);
            pthread_setspecific(key, static_cast<char *>(value) + 1);
        }
    });
    Row("SetLastError + GetLastError", "a slot of the thread, read twice", Ours([] {
            SetLastError(31);
            Keep(GetLastError());
        }),
        Do("two slot reads",
           [key] {
               Keep(pthread_getspecific(key));
               Keep(pthread_getspecific(key));
           }),
        {Do("errno", [] {
            errno = 31;
            Keep(errno);
        })});
    gEnterWexelxiCriticalSection();
    Row("nested round of the lock", "the thread's count, read and written twice", Ours([] {
            gEnterWexelxiCriticalSection();
            gLeaveWexelxiCriticalSection();
        }),
        slot);
    gLeaveWexelxiCriticalSection();

    static CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    static pthread_mutex_t mutex;
    pthread_mutexattr_t recursive;
    pthread_mutexattr_init(&recursive);
    pthread_mutexattr_settype(&recursive, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&mutex, &recursive);
    static std::recursive_mutex standard;
    static GRecMutex glib;
    g_rec_mutex_init(&glib);
    Row("critical section, enter + leave", "the platform's recursive mutex", Ours([] {
            EnterCriticalSection(&section);
            LeaveCriticalSection(&section);
        }),
        Do("pthread_mutex",
           [] {
               pthread_mutex_lock(&mutex);
               pthread_mutex_unlock(&mutex);
           }),
        {Do("libstdc++ recursive_mutex",
            [] {
                standard.lock();
                standard.unlock();
            }),
         Do("GLib GRecMutex", [] {
             g_rec_mutex_lock(&glib);
             g_rec_mutex_unlock(&glib);
         })});
}

void StringRows()
{
    for (const size_t size : {16, 1024, 64 * 1024}) {
        const std::string lower(size, 'e'), upper(size, 'E');
        Row("lstrcmpi, " + std::to_string(size) + " bytes equal but for case",
            "the lock; the platform's comparison",
            Ours([&] { Keep(lstrcmpi(lower.c_str(), upper.c_str())); }),
            Do("strcasecmp", [&] { Keep(strcasecmp(lower.c_str(), upper.c_str())); }),
            {Do("GLib g_ascii_strcasecmp",
                [&] { Keep(g_ascii_strcasecmp(lower.c_str(), upper.c_str())); })});
    }
    for (const size_t size : {1024, 64 * 1024}) {
        std::string text(size, 'e'), copy(size, 'e');
        Row("AnsiUpperBuff, " + std::to_string(size) + " bytes", "the lock; 16 bytes a step",
            Ours([&] { AnsiUpperBuff(text.data(), static_cast<uint32_t>(size)); }),
            Do("memcpy", [&] { memcpy(copy.data(), text.data(), size); }),
            {Do("GLib g_ascii_strup",
                [&] { g_free(g_ascii_strup(text.data(), static_cast<gssize>(size))); })});
    }
    char digits[16];
    Row("itoa, 10 digits", "the lock; the divisions",
        Ours([&] { Keep(itoa(1987654321, digits, 10)); }),
        Do("snprintf", [&] { snprintf(digits, sizeof digits, "%d", 1987654321); }),
        {Do("libstdc++ to_chars",
            [&] { Keep(std::to_chars(digits, digits + sizeof digits, 1987654321)); })});
    for (const size_t size : {1024, 64 * 1024}) {
        const std::string text(size, 'x');
        std::string target(size, 'y');
        Row("lstrcpy, " + std::to_string(size) + " bytes", "the lock; strcpy",
            Ours([&] { lstrcpy(target.data(), text.c_str()); }),
            Do("strcpy", [&] { strcpy(target.data(), text.c_str()); }), {Do("GLib g_strlcpy", [&] {
                g_strlcpy(target.data(), text.c_str(), target.size() + 1);
            })});
    }
    const char *name = "quarterly-report1.txt";
    GPatternSpec *pattern = g_pattern_spec_new("*.txt");
    Row("CheckFilter, *.txt on 21 characters", "a step a character",
        Ours([=] { Keep(CheckFilter("*.txt", name, TRUE)); }),
        Do("strlen and memcmp", [=] { Keep(memcmp(name + strlen(name) - 4, ".txt", 4)); }),
        {Do("fnmatch", [=] { Keep(fnmatch("*.txt", name, 0)); }),
         Do("GLib GPatternSpec", [=] { Keep(g_pattern_spec_match_string(pattern, name)); })});
    g_pattern_spec_free(pattern);
}

} // namespace

int main()
{
    const Host host;
    LockRows();
    StringRows();
}
