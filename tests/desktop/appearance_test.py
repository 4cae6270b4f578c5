#!/usr/bin/python3
"""The window follows the desktop's dark setting, which it reads from the portal."""
from bus import Portal, wait_until
from desktop_case import DesktopTest, main


class AppearanceTest(DesktopTest):
    def wait_until_dark(self, window, dark):
        left, top, width, height = window.place()

        def is_so():
            shown = self.desktop.pixels(left, top, width, height)
            mean = sum(shown[1::4]) / len(shown[1::4])
            return mean < 80 if dark else mean > 200

        wait_until(is_so, f"the window is {'dark' if dark else 'light'}")

    def test_window_turns_dark_and_light_with_the_desktop(self):
        portal = self.desktop.stand_in(Portal, Portal.DARK)
        portal.appear()
        window = self.start().window()
        self.wait_until_dark(window, True)
        for scheme in (Portal.LIGHT, Portal.DARK, Portal.NO_PREFERENCE):
            portal.turn(scheme)
            self.wait_until_dark(window, scheme == Portal.DARK)

    def test_window_follows_the_wish_for_contrast(self):
        portal = self.desktop.stand_in(Portal, Portal.LIGHT)
        portal.contrast = 1
        portal.appear()
        window = self.start().window()
        left, top, width, _ = window.place()

        def background():
            return bytes(self.desktop.pixels(left + width - 4, top + 4, 1, 1)[:3])

        wait_until(lambda: background() == b"\xff\xff\xff", "the page is white")
        portal.set_contrast(0)
        wait_until(lambda: background() == b"\xf7\xf7\xf4", "the page is grey")

    def test_dark_setting_of_a_late_portal_is_not_missed(self):
        window = self.start().window()
        self.wait_until_dark(window, False)
        portal = self.desktop.stand_in(Portal, Portal.DARK)
        portal.appear()
        self.wait_until_dark(window, True)
        portal.vanish()
        portal.scheme = Portal.LIGHT
        portal.appear()
        self.wait_until_dark(window, False)
        portal.turn(Portal.DARK)
        self.wait_until_dark(window, True)


if __name__ == "__main__":
    main()
