"""What the tests of the desktop program have in common. Run a test's file by itself, as ctest does."""
import os
import sys
import unittest

from desktop import Desktop, Program

AT_ONCE = 10  # seconds, on a busy machine: what waits for a server or for the keyring takes longer
OUTPUT = os.environ.get("ZEMBRASTEL_TEST_OUTPUT", ".")  # where pictures of failures go


class DesktopTest(unittest.TestCase):
    with_keyring = True

    def setUp(self):
        self.desktop = Desktop(self.with_keyring)
        self.addCleanup(self.desktop.end)

    def start(self, *arguments):
        return Program(self.desktop, *arguments)

    def fill_in(self, editor, site):
        for label, text in (("Profile name", "Site"), ("Server", "localhost"), ("Port", site.port), ("Username", "web"),
                            ("Password", "s3cret"), ("Remote folder", site.remote_folder),
                            ("Local folder", site.local)):
            self.desktop.type_into(editor.find("text", label), text)

    def report_failure(self):
        """While all is as it was when the test failed."""
        path = os.path.join(OUTPUT, self.id().removeprefix("__main__.") + ".ppm")
        self.desktop.take_picture(path)
        print(f"\nThe screen: {path}", file=sys.stderr)
        for program in self.desktop.programs:
            print(f"{program.name}, status {program.process.poll()}:", file=sys.stderr)
            print(self.desktop.log(program.name), file=sys.stderr)
            for window in program.windows():
                print(window.describe(), file=sys.stderr)


class Result(unittest.TextTestResult):
    def addError(self, test, err):
        super().addError(test, err)
        self.report(test)

    def addFailure(self, test, err):
        super().addFailure(test, err)
        self.report(test)

    @staticmethod
    def report(test):
        try:
            test.report_failure()
        except Exception as error:  # the failure itself must still be reported
            print(f"no more to report: {error!r}", file=sys.stderr)


def main():
    unittest.main(testRunner=unittest.TextTestRunner(verbosity=2, resultclass=Result))
