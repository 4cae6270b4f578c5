// Lines for a reader who stops reading, and who reads again.
#include "cli/terminal/output.h"
#include "cli_run.h"
#include "platform/descriptor.h"
#include "support/wait_for.h"

#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace zembrastel::testing {

using namespace cli;

namespace {

using Room = Output::NeverWaiting;

// Standard output is a pipe of 4 KiB while it lives.
class SmallPipe {
public:
    SmallPipe() : before(::dup(STDOUT_FILENO)) {
        std::array<int, 2> ends{};
        if (::pipe(ends.data()) != 0) throw std::system_error(errno, std::system_category());
        reading = Descriptor(ends[0]);
        ::fcntl(ends[1], F_SETPIPE_SZ, 4096);
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[1]);
    }
    SmallPipe(const SmallPipe&) = delete;
    SmallPipe& operator=(const SmallPipe&) = delete;
    ~SmallPipe() { restore(); }

    // Everything up to `words`.
    std::string readUntil(const std::string& words) {
        std::array<char, 4096> piece{};
        while (text.find(words) == std::string::npos) {
            const auto size = ::read(reading.get(), piece.data(), piece.size());
            if (size <= 0) break;
            text.append(piece.data(), static_cast<std::size_t>(size));
        }
        return text;
    }

    void restore() const { ::dup2(before.get(), STDOUT_FILENO); }

private:
    Descriptor before;
    Descriptor reading;
    std::string text;
};

TEST(Printer, DropsAndCountsWhatDoesNotFitAndGoesOn) {
    const auto line = [](int number) { return std::to_string(number) + std::string(92, '.'); };
    for (const bool json : {false, true}) {
        SmallPipe pipe;
        Output output(json);
        {
            const Room publishing(output, std::size_t{10} << 10U);
            for (int number = 1000; number < 2000; ++number) output.line(line(number));
            const std::string note = json ? R"({"event":"unprinted","lines":)" : " lines were not printed\n";
            const std::string told = pipe.readUntil(note);
            EXPECT_TRUE(told.starts_with(line(1000) + "\n" + line(1001) + "\n"));
            EXPECT_FALSE(contains(told, line(1999)));
            output.line("more");
            EXPECT_TRUE(contains(pipe.readUntil("more\n"), note));
        }
        pipe.restore();
    }
}

TEST(Printer, DropsNothingWhereEveryLineCounts) {
    SmallPipe pipe;
    Output output(false);
    std::jthread reader([&pipe] { EXPECT_TRUE(contains(pipe.readUntil("\n1999\n"), "\n1500\n")); });
    {
        const Room publishing(output, Room::unlimitedRoom, [] { return true; });
        for (int number = 1000; number < 2000; ++number) output.line(std::to_string(number));
    }
    pipe.restore();
}

} // namespace
} // namespace zembrastel::testing
