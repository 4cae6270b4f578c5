// The lines between a running program and those that ask it, in both directions.
#include "app/control/control_messages.h"

#include "promise.h"
#include "targets.h"

namespace zembrastel::fuzz {
namespace {

template <class Message, class Decode>
void checkRoundTrip(const Message& message, Decode decode) {
    const std::string line = encode(message);
    promise(line.find('\n') == std::string::npos, "a message is one line");
    promise(encode(decode(line)) == line, "what is sent is what arrives");
}

} // namespace

void controlMessages(std::string_view input) {
    if (const auto request = unlessRefused([&] { return decodeControlRequest(input); })) {
        checkRoundTrip(*request, decodeControlRequest);
    }
    if (const auto answer = unlessRefused([&] { return decodeControlAnswer(input); })) {
        checkRoundTrip(*answer, decodeControlAnswer);
    }
}

} // namespace zembrastel::fuzz
