#!/usr/bin/python3
"""How the program starts, is started again, and ends."""
import os
import re
import signal
import socket
import subprocess

from bus import PATIENCE, call, has_owner, wait_until
from desktop import COMMAND_LINE, PROGRAM, Site, read, write
from desktop_case import AT_ONCE, DesktopTest, main

OLD, NEW = b"old" * 1000, b"new!" * 256 * 1024  # the new one takes eight seconds to upload
SLOW = ("--rate", "128")


class LifecycleTest(DesktopTest):
    def run_command_line(self, *arguments):
        return subprocess.run([COMMAND_LINE, *arguments], env=self.desktop.environment, capture_output=True, text=True,
                              check=False)

    def start_slow_upload(self):
        """The site, the program, and the curls of the upload that is under way."""
        site = Site(self.desktop, *SLOW)
        write(site.remote, "index.html", OLD)
        write(site.local, "index.html", OLD)
        site.add_profile()
        program = self.start()
        window = program.window()
        window.press_button("Start watching")
        window.find("label", "Watching")
        write(site.local, "index.html", NEW)
        window.find("label", "Uploading")
        temporary = wait_until(lambda: [name for name in os.listdir(site.remote) if name != "index.html"], "it uploads")
        wait_until(lambda: read(site.remote, temporary[0]), "some of it has arrived")
        return site, program, wait_until(program.transfers, "curl is seen")

    def test_second_start_shows_the_window_of_the_first(self):
        program = self.start("--background")
        wait_until(program.root, "the program is up")
        self.assertEqual(program.windows(), [])
        self.assertRegex(read(f"/proc/{program.process.pid}", "limits"), b"Max core file size +[01] +[01] ")
        ignored = re.search(rb"SigIgn:\s*(\w+)", read(f"/proc/{program.process.pid}", "status"))[1]
        self.assertFalse(int(ignored, 16) >> (signal.SIGCHLD - 1) & 1, "it would not learn how transfers end")
        self.assertEqual(self.start().exit_status(), 0)
        program.window()
        self.assertEqual(program.end(signal.SIGINT), 0)

    def test_launcher_on_the_bus_gets_the_window(self):
        name = "org.zembrastel.Zembrastel"
        demo = self.start("--demo", "--background")
        wait_until(demo.root, "the sample is up")
        program = self.start("--background")
        wait_until(lambda: has_owner(self.desktop.bus, name), "the program has its name")
        wait_until(program.root, "the program is up")
        self.assertEqual(program.windows(), [])
        call(self.desktop.bus, name, "/org/zembrastel/Zembrastel", "org.freedesktop.Application", "Activate", "(a{sv})",
             {})
        program.window()
        self.assertEqual(demo.windows(), [])

    @staticmethod
    def dialogs(program):
        return [window for window in program.windows() if window.role() == "dialog"]

    def test_unusable_state_is_reported_in_the_window(self):
        site = Site(self.desktop)
        site.add_profile()
        state = self.desktop.path(".local/share/Zembrastel")
        self.desktop.spawn("command line", [COMMAND_LINE, "watch"])
        wait_until(lambda: self.run_command_line("status").returncode == 0, "the command line watches")
        write(self.desktop.folder, "file", b"in the way")
        in_the_way = self.desktop.path("file")
        for message, arguments in ((f"The state folder {state} is in use by another running program. Stop that program, "
                                 "then quit Zembrastel and start it again.", ("--background",)),
                                (f"{in_the_way}: ", ("--state", in_the_way + "/state"))):
            program = self.start(*arguments)
            alert, = wait_until(lambda: self.dialogs(program), "the alert is shown")
            alert.find("label", f"Could not load saved profiles: {message}", str.startswith)
            self.assertEqual(program.end(signal.SIGTERM), 0)

    def test_without_a_display_one_line_says_so(self):
        silent = socket.socket(socket.AF_UNIX) # accepts connections and never answers
        self.addCleanup(silent.close)
        silent.bind("\0/tmp/.X11-unix/X4712")
        silent.listen()
        for display in (None, ":4711", ":4712"):
            environment = dict(self.desktop.environment, DISPLAY=display or "")
            ended = subprocess.run([PROGRAM, "--demo"], env=environment, capture_output=True, text=True, check=False)
            self.assertEqual(ended.returncode, 1, ended.stderr)
            self.assertRegex(ended.stderr, "^zembrastel: Cannot open a window: .*[.]\n$")
            self.assertIn("not answered" if display == ":4712" else display or "DISPLAY", ended.stderr)

    def test_command_line_pauses_and_resumes_in_the_window(self):
        Site(self.desktop).add_profile()
        program = self.start()
        window = program.window()
        window.find("label", "Watching")
        paused = self.run_command_line("pause", "Site")
        self.assertEqual((paused.returncode, paused.stdout), (0, 'Paused "Site".\n'), paused.stderr)
        window.find("label", "Paused")
        self.assertIn("Paused", self.run_command_line("status").stdout)
        self.assertEqual(self.run_command_line("resume", "Site").returncode, 0)
        window.find("label", "Watching")
        self.assertEqual(program.end(signal.SIGTERM), 0)

    def test_upload_does_not_outlive_a_terminated_program(self):
        site, program, transfers = self.start_slow_upload()
        self.assertEqual(program.end(signal.SIGTERM, AT_ONCE), 0)
        self.assertEqual([pid for pid in transfers if os.path.exists(f"/proc/{pid}")], [])
        self.assertEqual(read(site.remote, "index.html"), OLD)

    def test_upload_killed_with_the_program_is_not_lost(self):
        site, program, transfers = self.start_slow_upload()
        program.end(signal.SIGKILL)

        def has_ended(pid):
            return b") Z " in (read(f"/proc/{pid}", "stat") or b") Z ")

        wait_until(lambda: all(map(has_ended, transfers)), "the transfers end with the program")
        again = self.start()
        window = again.window()

        def is_new():
            live = read(site.remote, "index.html")
            self.assertIn(live, (OLD, NEW))
            return live == NEW

        wait_until(is_new, "the new file is live", 2 * PATIENCE)
        window.find("list item", "Uploaded index.html, ", str.startswith)
        self.assertEqual(again.end(signal.SIGTERM), 0)


if __name__ == "__main__":
    main()
