#include "transport/curl/conversation.h"

#include "model/error.h"
#include "model/password_store.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/text.h"
#include "platform/uuid.h"
#include "transport/curl/curl_configuration.h"
#include "transport/transfer_observer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace zembrastel {
namespace {

using Time = std::chrono::steady_clock;

constexpr const char* withoutWords = "Transfer failed.";
constexpr const char* listingTooLong = "The server's directory listing is too long.";
constexpr const char* fileTooLong = "The server's file is too long.";
constexpr std::chrono::milliseconds stopInterval{50};

// curl writes its standard error byte by byte. After the first byte the others are waited for, since to wake up for
// each costs this program and curl more time than all else that they do for a small file.
constexpr std::chrono::microseconds gatherInterval{100};

// How exactly the end of a block is dated.
constexpr std::chrono::milliseconds readInterval{200};

// Variables that say how texts are written, whom to trust, and where temporary files go. Others may have curl write
// down the keys of its connections, load what it should not, or take another way to the server.
std::vector<std::string> curlEnvironment() {
    std::vector<std::string> environment;
    for (const std::string name :
         {"LANG", "LC_ALL", "LC_CTYPE", "LC_MESSAGES", "CURL_CA_BUNDLE", "SSL_CERT_FILE", "SSL_CERT_DIR", "TMPDIR"}) {
        if (const char* value = std::getenv(name.c_str())) environment.push_back(name + '=' + value);
    }
    return environment;
}

// The sentence for a block that failed: curl's own words, without the password should the server have repeated it.
std::string failureMessage(const std::string& words, std::string_view password) {
    if (!isValidUtf8(words)) return withoutWords;
    const std::string masked = withoutPassword(words, password);
    const auto text = trimmed(masked);
    // A curl that a signal ended has said nothing.
    return text.empty() ? withoutWords : std::string(text);
}

std::string keyChanged(const Profile& profile) {
    return "The key of " + printable(profile.host)
           + " has changed. It is not the one that this profile trusts. Nothing has been sent, not even the password.";
}

// Three numbers: curl's code, the server's, and seconds.
void readEnd(std::string_view text, BlockOutcome& outcome) {
    int code = 0;
    int reply = 0;
    double seconds = 0;
    const char* end = text.data() + text.size();
    const auto next = [end](const char* at) { return at == end ? at : at + 1; };
    const auto first = std::from_chars(text.data(), end, code);
    const auto second = std::from_chars(next(first.ptr), end, reply);
    std::from_chars(next(second.ptr), end, seconds);
    outcome.code = CurlCode(code);
    outcome.reply = FtpReply(reply);
    outcome.took = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::duration<double>(seconds));
}

// Twelve random digits: short, since curl writes each byte by a system call.
std::string newMark() {
    constexpr std::size_t length = 13;
    return Uuid::random().text().substr(0, length);
}

struct Pipe {
    Pipe() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) throwFileError("pipe", curlExecutable);
        reading = Descriptor(ends[0]);
        writing = Descriptor(ends[1]);
    }

    Descriptor reading;
    Descriptor writing;
};

// A pipe that curl writes to, and the text from it that is not yet used.
struct Stream : Pipe {
    Stream() { (void)::fcntl(reading.get(), F_SETFL, O_NONBLOCK); }

    // Takes what is there. Closes the stream at its end.
    void read() {
        while (reading) {
            std::array<char, 16384> piece; // not set to zero each time: it is read into often
            const ssize_t size = ::read(reading.get(), piece.data(), piece.size());
            if (size > 0) {
                text.append(piece.data(), static_cast<std::size_t>(size));
                if (static_cast<std::size_t>(size) < piece.size() || text.size() > maxBlockOutput) return;
                continue;
            }
            if (size < 0 && errno == EINTR) continue;
            if (size == 0 || errno != EAGAIN) reading.close();
            return;
        }
    }

    std::string text;
};

// curl gets both ends: if this program is killed, a pipe without a writing end would let curl pass before the kernel
// kills it.
std::vector<int> withGate(std::vector<int> files, const Pipe& gate) {
    files.insert(files.end(), {gate.reading.get(), gate.writing.get()});
    return files;
}

// curl blocks in it until a byte is in the pipe.
std::string pauseConfiguration(std::size_t gateFile, const std::string& writeOut) {
    return "silent\nproto = \"=file\"\nrange = \"0-0\"\noutput = \"/dev/null\"\nurl = "
           + quote("file://" + ChildProcess::filePathOf(gateFile)) + "\nwrite-out = " + quote(writeOut) + '\n';
}

class Talk {
public:
    Talk(
        const Profile& usedProfile, std::string_view usedPassword, TransferControl& usedControl,
        const TransferPlan& plan, const ConversationEvents& called)
        : profile(usedProfile), password(usedPassword), control(usedControl), events(called), blocks(plan.blocks),
          configuration(configure(plan.files.size())), curl(
                                                           {.executable = curlExecutable,
                                                            .arguments = {"--disable", "--config", "-"},
                                                            .output = output.writing.get(),
                                                            .errors = errors.writing.get(),
                                                            .files = withGate(plan.files, gate),
                                                            .environment = curlEnvironment(),
                                                            .maxWritten = plan.maxWritten}) {}

    void hold() {
        struct Registration {
            TransferControl& control;
            ~Registration() { control.clear(); }
        };
        atStop = blocks.front().atStop;
        control.launch(curl, atStop);
        const Registration registered{control};
        output.writing.close();
        errors.writing.close();
        if (!curl.writeInput(configuration)) curl.terminate();
        curl.closeInput();
        begin();
        while (goesOn && (output.reading || errors.reading)) {
            await();
            readBefore = std::exchange(lastRead, sinceBoot());
            if (errors.reading) errors.read();
            if (output.reading) output.read();
            dropReported();
            reportEnded();
            if (goesOn && std::max(output.text.size(), errors.text.size()) > maxBlockOutput) {
                finish({.code = CurlCode::writeFailed, .message = listingTooLong});
                goesOn = false;
            }
        }
        if (!goesOn) curl.terminate();
        curl.wait();
        const auto exit = curl.collect();
        if (atStop == TransferControl::AtStop::ends) control.check();
        if (goesOn && current < blocks.size()) finish(broken(exit));
    }

private:
    // curl writes the mark when a block has ended, to both of its streams: what is before it is the block's. No server
    // knows it.
    std::string configure(std::size_t gateFile) const {
        std::string text;
        for (const auto& block : blocks) {
            if (!text.empty()) text += "next\n";
            const std::string facts = block.facts.empty() ? "" : factsMark + block.facts;
            const std::string writeOut =
                mark + "%{stderr}" + facts + mark + "%{exitcode} %{response_code} %{time_total}\n";
            if (block.pause) {
                text += pauseConfiguration(gateFile, writeOut);
                continue;
            }
            auto options = block.options;
            options.push_back({"write-out", writeOut});
            text += curlConfiguration(profile, password, block.path, block.directory, options);
        }
        return text;
    }

    void await() {
        std::array<pollfd, 2> streams{
            pollfd{.fd = output.reading.get(), .events = POLLIN, .revents = 0},
            pollfd{.fd = errors.reading.get(), .events = POLLIN, .revents = 0}};
        std::chrono::milliseconds limit = readInterval;
        if (events.look) limit = std::min(limit, observationInterval);
        if (atStop == TransferControl::AtStop::lastsOut) limit = stopInterval;
        const int ready = ::poll(streams.data(), streams.size(), static_cast<int>(limit.count()));
        if (ready > 0) std::this_thread::sleep_for(gatherInterval);
        if (events.look && Time::now() - looked >= observationInterval) {
            looked = Time::now();
            events.look(curl);
        }
        if (ready == 0 && atStop == TransferControl::AtStop::lastsOut && control.isStopped()) {
            if (!stopSeen) stopSeen = Time::now();
            if (Time::now() - *stopSeen >= timeAfterStop) curl.terminate();
        }
    }

    void begin() {
        if (current >= blocks.size()) return;
        const auto& block = blocks[current];
        if (!block.pause) applyAtStop(block.atStop);
        if (events.begins && !events.begins(current)) {
            goesOn = false;
        } else if (block.pause) {
            applyAtStop(block.atStop);
            openGate();
        }
    }

    void applyAtStop(TransferControl::AtStop wanted) {
        if (std::exchange(atStop, wanted) != wanted) control.change(curl, wanted);
    }

    // This process keeps the reading end open, so that the write succeeds even when curl has ended.
    void openGate() const {
        if (::write(gate.writing.get(), "", 1) != 1) throwFileError("write", curlExecutable);
    }

    void finish(BlockOutcome outcome) {
        const auto block = current++;
        goesOn = events.ended(block, std::move(outcome)) && goesOn;
        if (goesOn) begin();
    }

    // The mark in curl's standard output may come long after the one in its standard error, since it is kept in a
    // buffer. What a block has written was sent on before either.
    void reportEnded() {
        while (goesOn && current < blocks.size()) {
            const auto at = errors.text.find(mark);
            const auto end = at == std::string::npos ? at : errors.text.find('\n', at);
            if (end == std::string::npos) return;
            output.read(); // what came since
            BlockOutcome outcome{
                .words = errors.text.substr(0, at),
                .notBegunAt = std::exchange(endedBefore, readBefore),
                .notEndedAt = readBefore};
            readEnd(std::string_view(errors.text).substr(at + mark.size(), end - at - mark.size()), outcome);
            errors.text.erase(0, end + 1);
            if (const auto facts = outcome.words.find(factsMark); facts != std::string::npos) {
                outcome.facts = outcome.words.substr(facts + factsMark.size());
                outcome.words.resize(facts);
            }
            const auto outputEnd = output.text.find(mark);
            if (outcome.succeeded()) {
                outcome.output = output.text.substr(0, outputEnd);
            } else {
                outcome.message = messageOf(outcome.code, outcome.words);
            }
            if (outputEnd == std::string::npos) {
                output.text.clear();
                ++marksToCome;
            } else {
                output.text.erase(0, outputEnd + mark.size());
            }
            finish(std::move(outcome));
        }
    }

    // Drops the marks of blocks that were reported before their marks had come.
    void dropReported() {
        while (marksToCome > 0) {
            const auto at = output.text.find(mark);
            if (at == std::string::npos) return;
            output.text.erase(0, at + mark.size());
            --marksToCome;
        }
    }

    // Of the block that was under way when curl ended.
    BlockOutcome broken(const ChildProcess::Exit& exit) {
        const bool tooLong = !exit.exited && exit.code == SIGXFSZ;
        const auto code = exit.exited && exit.code != 0 ? CurlCode(exit.code) : CurlCode::endedBySignal;
        return {.code = code, .message = tooLong ? fileTooLong : messageOf(code, errors.text), .words = errors.text};
    }

    [[nodiscard]] std::string messageOf(CurlCode code, const std::string& words) const {
        return code == CurlCode::wrongKey ? keyChanged(profile) : failureMessage(words, password);
    }

    const Profile& profile;
    const std::string_view password;
    TransferControl& control;
    const ConversationEvents& events;
    const std::vector<TransferBlock>& blocks;
    const std::string mark = newMark();
    const std::string factsMark = newMark();
    const std::string configuration;
    Stream output;
    Stream errors;
    Pipe gate;
    ChildProcess curl;
    std::size_t current = 0; // block
    std::chrono::nanoseconds lastRead = sinceBoot();
    std::chrono::nanoseconds readBefore = lastRead;  // the reading before the last one
    std::chrono::nanoseconds endedBefore = lastRead; // the block before had not ended yet
    std::size_t marksToCome = 0;
    TransferControl::AtStop atStop = TransferControl::AtStop::ends;
    bool goesOn = true;
    Time::time_point looked = Time::now();
    std::optional<Time::time_point> stopSeen;
};

} // namespace

std::chrono::nanoseconds sinceBoot() {
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

void converse(
    const Profile& profile, std::string_view password, TransferControl& control, const TransferPlan& plan,
    const ConversationEvents& events) {
    control.check();
    Talk(profile, password, control, plan, events).hold();
}

} // namespace zembrastel
