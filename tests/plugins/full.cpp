// A plug-in with everything: DllMain and a resource function, which note what they are told in a
// log that outlives the plug-in, the environment variable PLUGIN_LOG's file.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "wexelxi.h"

static void Note(const char *line)
{
    if (FILE *log = fopen(getenv("PLUGIN_LOG"), "a")) {
        fprintf(log, "%s\n", line);
        fclose(log);
    }
}

extern "C" WEXELXI_API BOOL DllMain(HMODULE module, uint32_t reason, intptr_t reserved)
{
    char line[100];
    snprintf(line, sizeof line, "DllMain %u %ld %s", reason, static_cast<long>(reserved),
             MODChain_findByMod(module) ? "in chain" : "not in chain");
    Note(line);
    SetLastError(77);
    return FALSE; // ignored
}

extern "C" WEXELXI_API int PluginAnswer(void)
{
    return 42;
}

extern "C" WEXELXI_API intptr_t WXresFunc(uint32_t opcode, intptr_t first, intptr_t second,
                                          intptr_t third)
{
    static const char data[] = "template";
    static intptr_t loads = 100;
    char line[100];
    snprintf(line, sizeof line, "%u", opcode);
    Note(line);
    SetLastError(78);
    switch (opcode) {
    case WXRES_FIND:
        return second == 10 && strcmp(reinterpret_cast<const char *>(first), "note") == 0 ? 7 : 0;
    case WXRES_LOAD:
        return first == 7 ? ++loads : 0;
    case WXRES_LOCK:
        return second == loads ? reinterpret_cast<intptr_t>(data) : 0;
    case WXRES_SIZE:
        return second == 7 ? static_cast<intptr_t>(0x500000000 + sizeof data) : 0;
    case WXRES_LOADSTRING: {
        auto *destination = reinterpret_cast<char *>(second);
        const int copied = snprintf(destination, static_cast<size_t>(third), "text %u",
                                    static_cast<uint32_t>(first));
        return copied;
    }
    default:
        return 0;
    }
}
