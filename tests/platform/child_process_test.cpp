#include "platform/child_process.h"
#include "platform/files.h"
#include "support/file_tree.h"
#include "support/temporary_folder.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>

namespace zembrastel {
namespace {

class ChildProcessTest : public ::testing::Test {
protected:
    Descriptor output(const std::string& name) {
        return Descriptor(::open((folder.path() / name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    }

    // A shell with this script. What it says is in the file "out".
    ChildProcess::Command shell(const std::string& script) const {
        return {.executable = "/bin/sh", .arguments = {"-c", script}, .output = out.get(), .errors = out.get()};
    }

    std::string written(const std::string& name) { return readFile(folder.path() / name).value(); }

    // Runs a shell script to its end, fed with `input`.
    ChildProcess::Exit runScript(const std::string& script, const std::string& input = "") {
        const auto err = output("err");
        auto command = shell(script);
        command.errors = err.get();
        ChildProcess child(command);
        child.start();
        inputTaken = child.writeInput(input);
        child.closeInput();
        child.wait();
        return child.collect();
    }

    testing::TemporaryFolder folder;
    const Descriptor out = output("out");
    bool inputTaken = false;
};

TEST_F(ChildProcessTest, LargeStreamsAndExitStatusArriveWhole) {
    const std::string input(1 << 20, 'x');
    const auto exit = runScript("cat; echo words >&2; exit 7", input);
    EXPECT_TRUE(exit.exited);
    EXPECT_EQ(exit.code, 7);
    EXPECT_EQ(written("out"), input);
    EXPECT_EQ(written("err"), "words\n");
}

TEST_F(ChildProcessTest, ChildThatStopsReadingHarmsNothing) {
    const auto before = std::signal(SIGPIPE, SIG_DFL);
    const auto exit = runScript("exec 0<&-; exit 3", std::string(1 << 22, 'x'));
    std::signal(SIGPIPE, before);
    EXPECT_FALSE(inputTaken);
    EXPECT_EQ(exit.code, 3);
}

TEST_F(ChildProcessTest, ManyChildrenDoNotDelayTheWindow) {
    // Reading the line first: by then the child's priority is set.
    runScript("read line; nice", "go on\n");
    EXPECT_GT(std::stoi(written("out")), 0); // the window's, however nice the tests themselves are
}

TEST_F(ChildProcessTest, NoDescriptorOrSignalLeaksIntoTheChild) {
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
    EXPECT_EQ(std::stoi(descriptors), 5); // the streams, the pipe that ends it, and the one that ls lists them through
    constexpr unsigned long long standardSignals = 0x7fffffff; // the C library keeps 32 and 33 for itself
    EXPECT_EQ(std::stoull(blockedSignals.substr(blockedSignals.find('\t')), nullptr, 16) & standardSignals, 0U);
    EXPECT_EQ(std::stoull(ignoredSignals.substr(ignoredSignals.find('\t')), nullptr, 16) & standardSignals, 0U);
    EXPECT_EQ(group, process) << "Ctrl-C in the program's terminal would reach the child as well";
}

TEST_F(ChildProcessTest, FilePositionIsTheChildsAndWaitsEndInTime) {
    std::ofstream(folder.path() / "file") << std::string(1000, 'x');
    const Descriptor file(::open((folder.path() / "file").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::lseek(file.get(), 900, SEEK_SET), 900); // this program's place is nobody's business
    auto command = shell("read start; exec 9< /dev/fd/3; head -c 300 <&9 >/dev/null; echo; exec sleep 60");
    command.files = {file.get()};
    ChildProcess child(command);
    child.start();
    EXPECT_FALSE(child.filePosition());
    ASSERT_TRUE(child.writeInput("go\n"));
    while (written("out").empty()) ASSERT_FALSE(child.wait(std::chrono::milliseconds(1)));
    EXPECT_EQ(child.filePosition(), 300U);
    child.terminate();
    while (!child.wait(std::chrono::minutes(1))) {
    }
    EXPECT_EQ(child.collect().code, SIGTERM);
}

TEST_F(ChildProcessTest, TerminateEndsARunningAndAStoppedChild) {
    for (const bool stopped : {false, true}) {
        ChildProcess child(shell(stopped ? "kill -STOP $$; sleep 60" : "exec sleep 60"));
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

TEST_F(ChildProcessTest, ExitOfAnotherChildIsNotCollected) {
    ChildProcess slow(shell("read line; exit 1"));
    slow.start();
    EXPECT_EQ(runScript("exit 2").code, 2);
    EXPECT_TRUE(slow.writeInput("go\n"));
    slow.wait();
    EXPECT_EQ(slow.collect().code, 1);
}

TEST_F(ChildProcessTest, MissingExecutableIsNamed) {
    ChildProcess missing({.executable = "/nonexistent/curl", .output = out.get(), .errors = out.get()});
    try {
        missing.start();
        FAIL() << "started";
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.path1(), "/nonexistent/curl");
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
}

TEST_F(ChildProcessTest, ChildEndsWithAKilledProgram) {
    ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0); // whoever has lost its parent becomes a child of this process
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    const Descriptor told(ends[0]);
    const pid_t program = fork();
    if (program == 0) {
        // A stopped child, too: it could not act on a request.
        ChildProcess child(
            {.executable = "/bin/sh", .arguments = {"-c", "echo $$; kill -STOP $$"}, .output = ends[1], .errors = 2});
        child.start();
        siginfo_t stopped{};
        waitid(P_ALL, 0, &stopped, WSTOPPED | WNOWAIT);
        ::kill(::getpid(), SIGKILL);
    }
    ::close(ends[1]);
    ASSERT_EQ(waitpid(program, nullptr, 0), program);
    std::array<char, 16> text{};
    ASSERT_GT(::read(told.get(), text.data(), text.size() - 1), 0);
    const pid_t child = std::stoi(text.data());
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    prctl(PR_SET_CHILD_SUBREAPER, 0);
}

TEST_F(ChildProcessTest, ClosedStandardStreamsDoNotMixUpFiles) {
    const pid_t program = fork();
    if (program == 0) {
        for (const int stream : {0, 1, 2}) ::close(stream);
        const auto first = output("first"); // 0
        const auto second = output("second");
        ChildProcess child(
            {.executable = "/bin/sh",
             .arguments = {"-c", "cat; echo words >&2; echo more >/dev/fd/4"},
             .output = second.get(),
             .errors = first.get(),
             .files = {first.get(), second.get()},
             .environment = {{"A=B"}}});
        child.start();
        const bool taken = child.writeInput("input\n");
        child.closeInput();
        child.wait();
        ::_exit(taken ? child.collect().code : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(program, &status, 0), program);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(written("second"), "more\n"); // opened anew, it is written from its beginning
    EXPECT_EQ(written("first"), "words\n");
}

TEST_F(ChildProcessTest, PassedFileIsWrittenAfterItsNameBecameALink) {
    const auto handedOver = output("file");
    const auto file = folder.path() / "file";
    std::filesystem::rename(file, folder.path() / "moved");
    testing::writeFile(folder.path() / "secret", "untouched");
    std::filesystem::create_symlink(folder.path() / "secret", file);
    auto command = shell(std::string("echo here > ") + ChildProcess::filePath);
    command.files = {handedOver.get()};
    ChildProcess child(command);
    child.start();
    child.wait();
    child.collect();
    EXPECT_EQ(written("moved"), "here\n");
    EXPECT_EQ(written("secret"), "untouched");
}

TEST_F(ChildProcessTest, EndlessWriterIsEndedAtTheLimit) {
    auto command = shell("read line; exec cat /dev/zero");
    command.maxWritten = 1 << 20;
    ChildProcess child(command);
    child.start();
    EXPECT_TRUE(child.writeInput("go\n"));
    child.wait();
    EXPECT_EQ(child.collect().code, SIGXFSZ);
    EXPECT_EQ(std::filesystem::file_size(folder.path() / "out"), 1U << 20);
}

} // namespace
} // namespace zembrastel
