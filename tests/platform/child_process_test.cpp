#include "platform/child_process.h"
#include "platform/files.h"
#include "support/temporary_folder.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/wait.h>
#include <thread>

namespace zembrastel {
namespace {

class ChildProcessTest : public ::testing::Test {
protected:
    Descriptor output(const std::string& name) {
        return Descriptor(::open((folder.path() / name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    }

    std::string written(const std::string& name) { return readFile(folder.path() / name).value(); }

    // Runs a shell script to its end, fed with `input`.
    ChildProcess::Exit runScript(const std::string& script, const std::string& input = "") {
        const auto out = output("out");
        const auto err = output("err");
        ChildProcess child(
            {.executable = "/bin/sh", .arguments = {"-c", script}, .output = out.get(), .errors = err.get()});
        child.start();
        inputTaken = child.writeInput(input);
        child.closeInput();
        child.wait();
        return child.collect();
    }

    testing::TemporaryFolder folder;
    bool inputTaken = false;
};

TEST_F(ChildProcessTest, StreamsAndExitStatusArriveWholeWhateverTheirSize) {
    const std::string input(1 << 20, 'x');
    const auto exit = runScript("cat; echo words >&2; exit 7", input);
    EXPECT_TRUE(exit.exited);
    EXPECT_EQ(exit.code, 7);
    EXPECT_EQ(written("out"), input);
    EXPECT_EQ(written("err"), "words\n");
}

TEST_F(ChildProcessTest, ChildThatStopsReadingNeitherKillsNorBlocksTheProgram) {
    const auto before = std::signal(SIGPIPE, SIG_DFL);
    const auto exit = runScript("exec 0<&-; exit 3", std::string(1 << 22, 'x'));
    std::signal(SIGPIPE, before);
    EXPECT_FALSE(inputTaken);
    EXPECT_EQ(exit.code, 3);
}

TEST_F(ChildProcessTest, NothingOfTheProgramLeaksIntoTheChild) {
    const Descriptor leaky(::open("/dev/null", O_RDONLY)); // not close-on-exec, as some library might open it
    sigset_t blocked;
    sigset_t before;
    sigfillset(&blocked);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    runScript(
        "ls /proc/self/fd | wc -l; grep -E 'Sig(Blk|Ign)' /proc/self/status; cut -d' ' -f5 /proc/$$/stat; echo $$");
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    std::istringstream lines(written("out"));
    std::string descriptors;
    std::string blockedSignals;
    std::string ignoredSignals;
    std::string group;
    std::string process;
    std::getline(lines, descriptors);
    std::getline(lines, blockedSignals);
    std::getline(lines, ignoredSignals);
    lines >> group >> process;
    EXPECT_EQ(std::stoi(descriptors), 4); // the three streams, and the one that ls lists them through
    constexpr unsigned long long standardSignals = 0x7fffffff; // the C library keeps 32 and 33 for itself
    EXPECT_EQ(std::stoull(blockedSignals.substr(blockedSignals.find('\t')), nullptr, 16) & standardSignals, 0U);
    EXPECT_EQ(std::stoull(ignoredSignals.substr(ignoredSignals.find('\t')), nullptr, 16) & standardSignals, 0U);
    EXPECT_EQ(group, process) << "Ctrl-C in the program's terminal would reach the child as well";
}

TEST_F(ChildProcessTest, TerminateEndsARunningAndAStoppedChild) {
    for (const bool stopped : {false, true}) {
        const auto out = output("out");
        ChildProcess child(
            {.executable = "/bin/sh",
             .arguments = {"-c", stopped ? "kill -STOP $$; sleep 60" : "exec sleep 60"},
             .output = out.get(),
             .errors = out.get()});
        child.start();
        if (stopped) {
            siginfo_t info{};
            ASSERT_EQ(waitid(P_ALL, 0, &info, WSTOPPED | WNOWAIT), 0);
        }
        std::jthread other([&child] { child.terminate(); });
        child.wait();
        other.join();
        const auto exit = child.collect();
        EXPECT_FALSE(exit.exited);
        EXPECT_EQ(exit.code, SIGTERM);
    }
}

TEST_F(ChildProcessTest, AnotherChildsExitIsNeverTakenForItsOwn) {
    const auto out = output("out");
    ChildProcess slow(
        {.executable = "/bin/sh", .arguments = {"-c", "read line; exit 1"}, .output = out.get(), .errors = out.get()});
    slow.start();
    EXPECT_EQ(runScript("exit 2").code, 2);
    EXPECT_TRUE(slow.writeInput("go\n"));
    slow.wait();
    EXPECT_EQ(slow.collect().code, 1);
}

TEST_F(ChildProcessTest, MissingExecutableIsNamedAndWorksInTheGivenFolder) {
    const auto out = output("out");
    ChildProcess missing({.executable = "/nonexistent/curl", .output = out.get(), .errors = out.get()});
    try {
        missing.start();
        FAIL() << "started";
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.path1(), "/nonexistent/curl");
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
    const Descriptor place(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ChildProcess inFolder(
        {.executable = "/bin/sh",
         .arguments = {"-c", "echo here > made"},
         .output = out.get(),
         .errors = out.get(),
         .workingFolder = place.get()});
    inFolder.start();
    inFolder.wait();
    inFolder.collect();
    EXPECT_EQ(written("made"), "here\n");
}

} // namespace
} // namespace zembrastel
