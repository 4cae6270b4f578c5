#!/usr/bin/python3
"""What the window's menu offers, and the desktop's notifications: with services of the test's own."""
import os
import subprocess

from bus import Notifications, Tray, wait_until
from desktop import Site, read, write
from desktop_case import DesktopTest, main

SITES = """<FileZilla3><Servers><Server><Name>Site</Name><Host>localhost</Host><Port>{port}</Port>
  <Protocol>4</Protocol><User>web</User><Pass encoding="base64">czNjcmV0</Pass><LocalDir>{local}</LocalDir>
  <RemoteDir>{remote}</RemoteDir></Server></Servers></FileZilla3>"""


def choose(program, *keys):
    """An entry of the window's menu, by the keys that lead to it."""
    program.window().press_button("Program menu")
    wait_until(program.desktop.has_menu, "the menu is open")
    program.desktop.press_keys(*keys, "Return")
    wait_until(lambda: not program.desktop.has_menu(), "the menu is closed")


START_AT_LOGIN = ("Up",) * 4
NOTIFICATIONS = ("Up",) * 5


class MenuTest(DesktopTest):
    def test_imported_site_needs_no_other_step_to_start(self):
        site = Site(self.desktop)
        write(site.local, "index.html", b"mine")
        remote = "".join(f" {len(part)} {part}" for part in site.remote_folder.strip("/").split("/"))
        write(self.desktop.path(".config/filezilla"), "sitemanager.xml",
              SITES.format(port=site.port, local=site.local, remote="1 0" + remote).encode())
        program = self.start()
        program.window().press_button("Import profiles…")
        program.window("Choose the file to import profiles from")
        self.desktop.press_keys("Return")  # it has found the file by itself
        sheet = program.window("Import profiles")
        sheet.press_button("Import 1 profile")
        program.wait_until_closed("Import profiles")
        window = program.window()
        window.press_button("Start watching")
        window.find("label", "Watching")
        window.find("list item", "Uploaded index.html, ", str.startswith)
        self.assertEqual(read(site.remote, "index.html"), b"mine")
        self.assertEqual(self.desktop.count_passwords(), 1)

    def test_start_at_login_can_be_switched_off_again(self):
        entry = self.desktop.path(".config/autostart/org.zembrastel.Zembrastel.desktop")
        program = self.start()
        for is_there in (True, False):
            choose(program, *START_AT_LOGIN)
            message = program.window("Start at login")
            message.press_button("OK")
            program.wait_until_closed("Start at login")
            self.assertEqual(os.path.exists(entry), is_there)
            if is_there:
                subprocess.run(["desktop-file-validate", entry], check=True)
                self.assertIn(b" \"--background\"\n", read("", entry))


class NotificationTest(DesktopTest):
    def setUp(self):
        super().setUp()
        self.notifications = self.desktop.stand_in(Notifications)
        self.notifications.appear()

    def prepare_review(self):
        site = Site(self.desktop)
        site.add_profile("Tea & cake")
        write(site.local, "index.html", b"old")
        program = self.start()
        program.window().find("label", "Watching")
        program.window().find("list item", "Uploaded index.html, ", str.startswith)
        program.window().find("label", "Watching")
        self.desktop.press_keys("ctrl+q")
        program.exit_status()
        write(site.remote, "index.html", b"a colleague's", newer_by=60)

    def test_review_in_the_background_is_not_missed(self):
        self.prepare_review()
        program = self.start("--background")
        wait_until(lambda: self.notifications.shown, "a notification is shown")
        (number, (title, text)), = self.notifications.shown.items()
        self.assertEqual(title, "Tea & cake: newer files on the server")
        self.assertEqual(text, "1 file is newer on the server. Uploads are paused until you choose which versions to "
                               "keep.")
        self.assertEqual(program.windows(), [])
        self.notifications.act(number)
        program.window("Newer files on the server – Tea & cake").press_button("Download 1 & start watching")
        wait_until(lambda: not self.notifications.shown, "the notification goes")
        self.assertEqual(self.notifications.count, 1)

    def close_and_reopen(self, program, item):
        self.desktop.close_window("Zembrastel")
        program.wait_until_closed()
        item.click("Open Zembrastel")
        program.window()

    def quit(self, program, item):
        item.click("Quit Zembrastel")
        self.assertEqual(program.exit_status(), 0)
        self.tray.items.clear()

    def test_hint_at_first_close_comes_once_and_if_wanted(self):
        self.tray = self.desktop.stand_in(Tray)
        self.tray.appear()
        program = self.start()
        choose(program, *NOTIFICATIONS)
        self.quit(program, self.tray.item())

        program = self.start()
        program.window()
        item = self.tray.item()
        self.close_and_reopen(program, item)
        choose(program, *NOTIFICATIONS)
        self.quit(program, item)  # with the window open, which is no first close

        program = self.start()
        program.window()
        item = self.tray.item()
        self.close_and_reopen(program, item)
        wait_until(lambda: self.notifications.shown, "a notification is shown")
        self.close_and_reopen(program, item)
        self.quit(program, item)

        program = self.start()
        program.window()
        item = self.tray.item()
        self.close_and_reopen(program, item)
        self.quit(program, item)
        self.assertEqual([title for title, _ in self.notifications.shown.values()], ["Zembrastel keeps syncing"])
        self.assertEqual(self.notifications.count, 1)


if __name__ == "__main__":
    main()
