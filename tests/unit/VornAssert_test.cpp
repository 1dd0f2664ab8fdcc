#include "qzUtils/VornAssert.h"

#include <gtest/gtest.h>

#include <csignal>
#include <type_traits>

namespace {

static_assert(std::is_same_v<decltype(vorn::DeclareUnreachable()), void>);

TEST(VornAssertDeathTest, EndsTheProcess) {
    EXPECT_EXIT(vorn::DeclareUnreachable(), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
