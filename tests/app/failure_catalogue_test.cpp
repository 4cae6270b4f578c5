#include "app/diagnosis/failure_catalogue.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using Action = FailureAction;
using Actions = std::vector<Action>;

Failure ofCurl(CurlCode code, FtpReply reply = FtpReply::none, const std::string& path = {}) {
    return {.message = "curl: words", .kind = Failure::Kind::transfer, .code = code, .reply = reply, .path = path};
}

Profile profileAt(const std::string& folder) {
    Profile profile;
    profile.host = "ftp.example.com";
    profile.remoteFolder = folder;
    return profile;
}

TEST(FailureCatalogue, CauseAndWayOutAreNamed) {
    struct Case {
        Failure failure;
        std::string heading;
        Actions actions;
        std::string folder = "/public_html/x";
    };
    const Actions edit{Action::editProfile, Action::retry, Action::pause};
    const Actions wait{Action::retry, Action::pause};
    for (const auto& [failure, heading, actions, folder] : std::vector<Case>{
             {ofCurl(CurlCode::loginRefused, FtpReply(530)), "The server refused the username or the password.", edit},
             {ofCurl(CurlCode::hostNotFound), "The server name ftp.example.com is not known.", edit},
             {ofCurl(CurlCode::notConnected), "There is no answer from ftp.example.com at port 21.", edit},
             {ofCurl(CurlCode::noSuchFolder),
              "The folder /public_html/x does not exist on ftp.example.com.",
              {Action::createFolder, Action::editProfile, Action::retry, Action::pause}},
             {ofCurl(CurlCode::noSuchFolder), "The server does not let you read this folder.", edit, "/"},
             {ofCurl(CurlCode::noSuchFolder, FtpReply::notAllowed, "a/b"),
              "You may not write to this folder on the server.", wait},
             {ofCurl(CurlCode::uploadRefused, FtpReply::nameRefused, "a?b"),
              "The server does not accept this file name.", edit},
             {ofCurl(CurlCode::uploadRefused, FtpReply::quotaExceeded, "a"),
              "The server has no space left for your files.", wait},
             {ofCurl(CurlCode::uploadRefused, FtpReply::notAllowed, "a"),
              "You may not write to this folder on the server.", wait},
             {ofCurl(CurlCode::timedOut, FtpReply::hangsUp), "The server takes no further connection.", wait},
             {ofCurl(CurlCode::timedOut), "ftp.example.com does not answer.", wait},
             {ofCurl(CurlCode::receiveFailed), "The server closed the connection.", wait},
             {{.message = "The disk is full"}, "The disk is full.", wait}}) {
        const auto explanation = explain(failure, profileAt(folder));
        EXPECT_EQ(explanation.heading.text(), heading);
        EXPECT_EQ(explanation.actions, actions) << heading;
        EXPECT_TRUE(explanation.known);
        const bool isCurls = failure.kind == Failure::Kind::transfer;
        EXPECT_EQ(explanation.details, isCurls ? "curl: words" : "");
        EXPECT_EQ(explanation.next.text().empty(), !isCurls) << heading;
    }
    EXPECT_FALSE(explain(ofCurl(CurlCode(99)), profileAt("/")).known);
}

TEST(FailureCatalogue, CurlsGeneralAdviceIsLeftOut) {
    auto failure = ofCurl(CurlCode::untrustedCertificate);
    failure.message = "curl: (60) SSL certificate problem: self-signed certificate\n"
                      "More details here: https://curl.se/docs/sslcerts.html\n\ncurl failed to verify the legitimacy";
    EXPECT_EQ(explain(failure, profileAt("/")).details, "curl: (60) SSL certificate problem: self-signed certificate");
}

} // namespace
} // namespace zembrastel
