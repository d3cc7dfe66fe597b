// Starts the library on a scratch configuration folder for the length of a test.
#pragma once

#include <cstdlib>
#include <gtest/gtest.h>

#include "support/scratch.h"
#include "wexelxi/core.h"

class StartedLibrary {
public:
    explicit StartedLibrary(WXRESFUNC resources = nullptr, intptr_t noLock = 0)
    {
        setenv("WEXELXIDIR", folder.path().c_str(), 1);
        EXPECT_EQ(InitLib("/opt/host/bin/host", resources, noLock), 0);
    }
    ~StartedLibrary() { FreeLib(); }
    StartedLibrary(const StartedLibrary &) = delete;
    StartedLibrary &operator=(const StartedLibrary &) = delete;

    ScratchFolder folder; // the configuration folder
};
