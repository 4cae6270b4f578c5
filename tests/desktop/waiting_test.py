#!/usr/bin/python3
"""Keyrings and servers that keep the program waiting, or are not there: the window goes on, and says what to do."""
import os
import signal
import time

from bus import wait_until
from desktop import Site, write
from desktop_case import AT_ONCE, DesktopTest, main


class WaitingTest(DesktopTest):
    def pause_at_once(self, window):
        pressed = time.monotonic()
        window.press_button("Pause watching")
        window.find("label", "Paused")
        self.assertLess(time.monotonic() - pressed, AT_ONCE)

    def edit_profile(self, program):
        program.window().find("list", "SYNC PROFILES").focus()
        self.desktop.press_keys("Return")
        return program.window("Edit sync profile")

    def test_keyring_that_waits_does_not_block_the_window(self):
        Site(self.desktop).add_profile()
        self.desktop.keyring.send_signal(signal.SIGSTOP)
        program = self.start()
        window = program.window()
        window.find("label", "Starting")
        self.pause_at_once(window)
        editor = self.edit_profile(program)
        self.assertEqual(editor.find("text", "Password").description(), "Reading from keyring…")
        editor.press_button("Cancel")
        program.wait_until_closed("Edit sync profile")
        window.press_button("Start watching")
        window.find("label", "Starting")
        self.desktop.keyring.send_signal(signal.SIGCONT)
        window.find("label", "Watching")

        self.desktop.keyring.send_signal(signal.SIGSTOP)
        program.window()
        self.desktop.press_keys("Delete")
        program.window("Remove this sync profile?").press_button("Remove profile")
        program.wait_until_closed("Remove this sync profile?")
        self.pause_at_once(window)
        self.assertEqual(program.end(signal.SIGTERM, AT_ONCE), 0)

    def test_locked_keyring_is_named_with_the_remedy(self):
        Site(self.desktop).add_profile()
        self.desktop.lock_keyring()
        window = self.start().window()
        window.find("label", "Needs attention")
        window.find("label", "Keychain: The secret store is locked and was not unlocked. Unlock the desktop's keyring",
                    str.startswith)
        window.find("push button", "Start watching")

    def test_silent_server_does_not_block_the_window(self):
        site = Site(self.desktop, "--hang", "greeting", server="odd_ftp_server.py", encrypted=False)
        site.add_profile()
        program = self.start()
        window = program.window()
        window.find("label", "Checking server")
        wait_until(program.transfers, "the server is asked")
        self.pause_at_once(window)
        wait_until(lambda: not program.transfers(), "nothing is asked any more", AT_ONCE)

        editor = self.edit_profile(program)
        editor.press_button("Test connection")
        wait_until(program.transfers, "the connection is tested")
        editor.press_button("Cancel")
        program.wait_until_closed("Edit sync profile")
        wait_until(lambda: not program.transfers(), "nothing is tested any more", AT_ONCE)


class WithoutKeyringTest(DesktopTest):
    with_keyring = False

    def test_password_can_be_kept_for_the_session_alone(self):
        site = Site(self.desktop)
        program = self.start()
        program.window().press_button("Create your first profile")
        editor = program.window("New sync profile")
        self.fill_in(editor, site)
        editor.find("check box", "Download server files to the local folder first").press()
        editor.press_button("Create profile")
        editor.find("label", "Keychain: No secret service is running. Unlock the desktop's keyring, or install one",
                    str.startswith)
        editor.press_button("Keep the password for this session only")
        program.wait_until_closed("New sync profile")
        window = program.window()
        window.find("label", "Watching")
        write(site.local, "index.html", b"new")
        window.find("list item", "Uploaded index.html, ", str.startswith)
        self.assertEqual(program.end(signal.SIGTERM), 0)
        for folder, _, names in os.walk(self.desktop.path(".local")):
            for name in names:
                with open(os.path.join(folder, name), "rb") as file:
                    self.assertNotIn(b"s3cret", file.read())

        window = self.start().window()
        window.find("label", "Keychain: No secret service is running. Unlock the desktop's keyring, or install one",
                    str.startswith)


if __name__ == "__main__":
    main()
