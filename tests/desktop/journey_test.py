#!/usr/bin/python3
"""One person's way through the program, from nothing to a published site and back, as a screen reader presents it."""
import os
import time

from bus import wait_until
from desktop import Site, read, write
from desktop_case import DesktopTest, main


class JourneyTest(DesktopTest):
    def create_profile(self, program, site):
        program.window()
        self.desktop.press_keys("ctrl+n")
        editor = program.window("New sync profile")
        self.fill_in(editor, site)
        editor.press_button("Test connection")
        editor.find("label", "Connected. The remote folder is readable (2 items). Upload permission is checked when a "
                             "file uploads.")
        editor.press_button("Choose download contents…")
        self.choose_contents(program.window("Choose what to download"))
        program.wait_until_closed("Choose what to download")
        program.window("New sync profile").press_button("Create profile & download")
        program.wait_until_closed("New sync profile")

    def choose_contents(self, picker):
        picker.find("label", "Nothing selected")
        picker.find("list item", "index.html, Not selected")
        picker.find("list item", "pictures, closed folder, Not selected")
        self.desktop.press_keys("Home", "Right")
        picker.find("list item", "logo.svg, Not selected")
        self.desktop.press_keys("Right", "space")
        picker.find("list item", "pictures, open folder, Partially selected")
        self.desktop.press_keys("End", "space")
        picker.find("list item", "index.html, Selected")
        picker.press_button("Use selection")

    def decide_review(self, program):
        review = program.window("Newer files on the server – Site")
        review.find("label", "1 of 1 selected")
        review.press_button("Download 1 & start watching")
        program.wait_until_closed("Newer files on the server – Site")

    def test_site_is_published_reviewed_and_given_up(self):
        site = Site(self.desktop)
        write(site.remote, "index.html", b"first")
        write(site.remote, "pictures/logo.svg", b"logo")
        write(site.remote, "pictures/unwanted.svg", b"unwanted")
        program = self.start()
        program.window().find("label", "Save locally. Ship automatically.")

        self.create_profile(program, site)
        window = program.window()
        window.find("label", "Watching")
        self.assertEqual([each.name() for each in window.shown() if "<" in each.description()], [], "presents markup")
        self.assertEqual(self.desktop.count_passwords(), 1)
        self.assertEqual([read(site.local, name) for name in ("index.html", "pictures/logo.svg",
                                                              "pictures/unwanted.svg")], [b"first", b"logo", None])

        write(site.local, "index.html", b"second")
        window.find("list item", "Uploaded index.html, ", str.startswith)
        self.assertEqual(read(site.remote, "index.html"), b"second")
        window.find("label", "Watching")  # once the server's date of the upload is known

        write(site.remote, "index.html", b"a colleague's", newer_by=60)
        window.press_button("Pause watching")
        window.press_button("Start watching")
        self.decide_review(program)
        window = program.window()
        window.find("label", "Watching")
        self.assertEqual(read(site.local, "index.html"), b"a colleague's")
        backups = [os.path.join(folder, name) for folder, _, names in os.walk(site.local + "/.zembrastel-backups")
                   for name in names]
        self.assertEqual([read("", backup) for backup in backups], [b"second"])

        window.press_button("Pause watching")
        window.find("list", "SYNC PROFILES").focus()
        self.desktop.press_keys("Delete")
        question = program.window("Remove this sync profile?")
        question.find("label", "This removes the saved connection and its Keychain password. Your local and remote "
                               "files are kept.")
        question.press_button("Remove profile")
        window.find("label", "Save locally. Ship automatically.")
        wait_until(lambda: self.desktop.count_passwords() == 0, "the password is gone")
        self.assertEqual([read(folder, "index.html") for folder in (site.local, site.remote)], 2 * [b"a colleague's"])
        program.window()
        self.desktop.press_keys("ctrl+q")
        self.assertEqual(program.exit_status(), 0)

    def test_site_that_is_on_the_server_is_taken_over_in_a_few_steps(self):
        """The server's certificate is signed by itself and for another name; 612 of 640 files are there."""
        site, a_day = Site(self.desktop, certificate="self.pem"), 86400
        for number in range(640):
            name, data = f"section{number % 16}/page{number}.html", b"page %d" % number
            write(site.local, name, data)
            if number < 612:
                write(site.remote, name, data, newer_by=-a_day)
        program, steps = self.start(), []

        def press(button, title="Zembrastel"):
            window = program.window(title)
            steps.append(button)
            shown = window.find("push button", button)
            self.assertNotRegex(wait_until(window.describe, f"“{title}” is at rest"), "curl|SSL")
            shown.press()

        press("Create your first profile")
        editor = program.window("New sync profile")
        for label, text in (("Profile name", "Site"), ("Server", "127.0.0.1"), ("Port", site.port), ("Username", "web"),
                            ("Password", "s3cret"), ("Local folder", site.local)):
            steps.append(label)
            self.desktop.type_into(editor.find("text", label), text)
        press("Choose a remote folder", "New sync profile")
        press("Review certificate…", "New sync profile")
        press("Trust this certificate for this profile…", "The certificate cannot be verified")
        press("Trust this key", "Trust this key?")
        program.wait_until_closed("The certificate cannot be verified")
        press("Choose a remote folder", "New sync profile")
        folders = program.window("Choose the remote folder")
        # Opens at the login folder: "/" if the test runs as root, else a folder of this machine.
        login, key = os.path.dirname(site.remote_folder), "Right"
        folders.find("list item", login)
        if login == "/":
            folders.find("list item", site.remote_folder)
            key = "End"

        def choose():
            self.desktop.press_keys(key)
            return folders.look_for("label", site.remote_folder)

        wait_until(choose, "the site's folder is chosen")
        steps += [key, key]
        press("Use this folder", "Choose the remote folder")
        program.wait_until_closed("Choose the remote folder")
        editor.find("check box", "Download server files to the local folder first").press()
        press("Create profile", "New sync profile")
        program.wait_until_closed("New sync profile")
        press("Upload the other 28")
        window = program.window()
        window.find("label", "Watching")
        dates = [os.path.getmtime(os.path.join(folder, name)) for folder, _, names in os.walk(site.remote)
                 for name in names]
        self.assertEqual((len(dates), sum(date < time.time() - a_day / 2 for date in dates)), (640, 612))
        write(site.local, "section3/page3.html", b"an edit")
        window.find("list item", "Uploaded section3/page3.html, ", str.startswith)
        self.assertEqual(read(site.remote, "section3/page3.html"), b"an edit")
        self.assertLess(len(steps), 25, steps)


if __name__ == "__main__":
    main()
