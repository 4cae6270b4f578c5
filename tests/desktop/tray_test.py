#!/usr/bin/python3
"""The item in the tray, as a desktop reads and clicks it."""
from bus import Portal, Tray, has_owner, wait_until
from desktop import Site, write
from desktop_case import DesktopTest, main


class TrayTest(DesktopTest):
    def setUp(self):
        super().setUp()
        self.tray = self.desktop.stand_in(Tray)

    @staticmethod
    def wait_for_menu(item, *labels):
        wait_until(lambda: item.labels() == list(labels), f"the menu is {labels}")

    def test_tray_menu_controls_profiles_and_window(self):
        site = Site(self.desktop)
        site.add_profile("Tea & cake & my_site")
        self.tray.appear()
        program = self.start()
        program.window()
        item = self.tray.item()
        self.assertEqual(item.read("Title"), "Zembrastel")
        self.assertTrue(item.read("IconPixmap"))
        self.wait_for_menu(item, "Open Zembrastel", "-", "Pause Tea & cake & my_site", "-", "Quit Zembrastel")
        item.click("Pause Tea & cake & my_site")
        program.window().find("label", "Paused")
        self.wait_for_menu(item, "Open Zembrastel", "-", "Start Tea & cake & my_site", "-", "Quit Zembrastel")
        item.click("Start Tea & cake & my_site")
        program.window().find("label", "Watching")
        self.wait_for_menu(item, "Open Zembrastel", "-", "Pause Tea & cake & my_site", "-", "Quit Zembrastel")

        # A menu that is open while files go up can still be clicked.
        entries = item.entries()
        write(site.local, "index.html", b"new")
        program.window().find("list item", "Uploaded index.html, ", str.startswith)
        self.assertEqual(item.entries(), entries)

        for come_back in (lambda: item.click("Open Zembrastel"), item.activate):
            self.desktop.close_window("Zembrastel")
            program.wait_until_closed()
            come_back()
            program.window()
        item.click("Quit Zembrastel")
        self.assertEqual(program.exit_status(), 0)

    def test_item_comes_and_goes_with_the_tray(self):
        program = self.start()
        program.window()
        self.tray.has_host = False
        self.tray.appear()
        wait_until(lambda: self.tray.was_asked, "the program looks for a host")
        self.tray.find_host()
        for _ in range(3):
            item = self.tray.item()
            self.wait_for_menu(item, "Open Zembrastel", "-", "(No sync profiles)", "-", "Quit Zembrastel")
            self.tray.vanish()
            wait_until(lambda: not has_owner(self.desktop.bus, item.owner), "the item goes")
            self.tray.appear()

    def test_tray_icon_stays_visible_on_a_dark_desktop(self):
        portal = self.desktop.stand_in(Portal, Portal.LIGHT)
        portal.appear()
        self.tray.appear()
        self.start()
        item = self.tray.item()
        before = item.read("IconPixmap")
        changes = self.tray.icon_changes
        portal.turn(Portal.DARK)
        wait_until(lambda: self.tray.icon_changes > changes, "the icon is said to be another")
        self.assertNotEqual(item.read("IconPixmap"), before)

    def test_closing_without_a_tray_strands_no_user(self):
        program = self.start()
        program.window()
        self.desktop.close_window("Zembrastel")
        program.window("Zembrastel keeps syncing").press_button("OK")
        program.wait_until_closed("Zembrastel keeps syncing")
        self.assertEqual(self.start().exit_status(), 0)
        program.window()
        self.desktop.close_window("Zembrastel")
        program.wait_until_closed()
        self.assertEqual(program.windows(), [])
        self.assertIsNone(program.process.poll())


if __name__ == "__main__":
    main()
