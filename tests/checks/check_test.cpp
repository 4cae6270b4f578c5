#include "checks/check.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace zembrastel {
namespace {

TEST(Check, FailsUnlessItsRequirementHolds) {
    EXPECT_THROW(require(false, ""), std::runtime_error);
    EXPECT_THROW(requireEqual("", "seen", "expected"), std::runtime_error);
    EXPECT_THROW(requireEqual("", {"seen"}, std::vector<std::string>{}), std::runtime_error);
    const auto isA = [](std::string_view path) { return path == "a"; };
    EXPECT_THROW(requireForAll({"a", "b"}, "", true, isA), std::runtime_error);
    EXPECT_NO_THROW(requireForAll({"b"}, "", false, isA));
}

} // namespace
} // namespace zembrastel
