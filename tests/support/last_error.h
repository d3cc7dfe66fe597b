// One call, its result and its last error, in one line:
//
//   EXPECT_OUTCOME(DeleteFile(path), FALSE, ERROR_FILE_NOT_FOUND) << path;
//   EXPECT_OUTCOME(GlobalSize(handle), 13u, kUnchanged);
//   EXPECT_LAST_ERROR(SetLastErrorString("text"), kUnchanged); // where there is no result to see
//
// A number that no function stores stands there before the call, and the thread's count of the
// global lock must be the same behind it. A comma outside parentheses needs parentheses.
#pragma once

#include <gtest/gtest.h>
#include <type_traits>

#include "wexelxi/core.h"
#include "wexelxi/threads.h"

constexpr uint32_t kUnchanged = 0x5E171E1; // the last error that stood there before the call

template <typename Call>
testing::AssertionResult CheckLastError(const char *text, uint32_t error, Call call)
{
    const void *count = TlsGetValue(gCriticalSectionTLS);
    SetLastError(kUnchanged);
    call();
    const uint32_t left = GetLastError();
    if (TlsGetValue(gCriticalSectionTLS) != count)
        return testing::AssertionFailure() << text << " leaves the lock otherwise than it was";
    if (left == error)
        return testing::AssertionSuccess();
    const auto name = [](uint32_t number) {
        return number == kUnchanged ? std::string("unchanged") : std::to_string(number);
    };
    return testing::AssertionFailure()
           << text << " leaves last error " << name(left) << ", not " << name(error);
}

template <typename Call>
testing::AssertionResult CheckOutcome(const char *text,
                                      std::type_identity_t<std::invoke_result_t<Call>> expected,
                                      uint32_t error, Call call)
{
    std::invoke_result_t<Call> result = expected;
    const testing::AssertionResult checked = CheckLastError(text, error, [&] { result = call(); });
    if (result == expected)
        return checked;
    return testing::AssertionFailure()
           << text << " gives " << testing::PrintToString(result) << ", not "
           << testing::PrintToString(expected) << (checked ? "" : "; ") << checked.message();
}

#define EXPECT_OUTCOME(call, result, error) \
    EXPECT_TRUE(CheckOutcome(#call, result, error, [&] { return call; }))
#define EXPECT_LAST_ERROR(call, error) EXPECT_TRUE(CheckLastError(#call, error, [&] { call; }))
