// What is sent to whoever helps.
#include "app/diagnosis/support_details.h"

#include "platform/text.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

TEST(SupportDetails, PasswordIsNowhereInThem) {
    const std::string password = "geheim&1";
    Profile profile;
    profile.name = "Site of " + password;
    profile.host = "ftp.example.com";
    profile.username = password;
    profile.exclusions = Exclusions("*.psd\n" + password);
    profile.syncSelection = DownloadSelection{{{"images", true}, {"images/" + password, false}}};
    ProfileStatus status;
    status.phase = Phase::waitingToRetry;
    status.detail = "530 no " + password;
    for (int n = 0; n < 100; ++n) {
        status.activity.push_back(
            {.date = {},
             .text = "line " + std::to_string(n) + "\nof " + password,
             .kind = n == 0 ? Activity::Kind::failure : Activity::Kind::note});
    }
    const auto details = supportDetails(
        {.program = "zembrastel 9.8",
         .profile = profile,
         .password = password,
         .status = &status,
         .failure = "curl: (67) Access denied: 530 " + password});
    EXPECT_EQ(details.find(password), std::string::npos) << details;
    EXPECT_TRUE(details.starts_with("zembrastel 9.8"));
    for (const auto* told :
         {"ftp.example.com, port 21", "curl: (67) Access denied: 530", "Waiting to retry", "  failed: line 0 of ",
          "*.psd", "1970-01-01T00:00:00Z", "images, not images/••••"}) {
        EXPECT_NE(details.find(told), std::string::npos) << told << " in " << details;
    }
    EXPECT_EQ(details.find("line 20"), std::string::npos) << "only the last lines are of use";
}

} // namespace
} // namespace zembrastel
