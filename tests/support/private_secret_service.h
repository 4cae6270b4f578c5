// Base of the tests that store secrets: they refuse to run on the user's own store.
#pragma once

#include <cstdlib>
#include <gtest/gtest.h>

namespace zembrastel {

class PrivateSecretService : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::getenv("TEST_SECRET_SERVICE_PID") == nullptr) {
            FAIL() << "Run this test inside tests/support/with_secret_service, which gives it a store of its own.";
        }
    }
};

} // namespace zembrastel
