// A started library on a scratch folder, for a benchmark's length.
#pragma once

#include <cstdio>
#include <cstdlib>

#include "support/scratch.h"
#include "wexelxi.h"

struct Host {
    explicit Host(WXRESFUNC resources = nullptr)
    {
        setenv("WEXELXIDIR", folder.path().c_str(), 1);
        if (InitLib("/opt/host/bin/host", resources, 0) != 0) {
            fputs("the library does not start\n", stderr);
            exit(1);
        }
    }
    ~Host() { FreeLib(); }
    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;

    ScratchFolder folder;
};
