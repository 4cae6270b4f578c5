"""translation_test.py SCREENSHOTS: the window's texts can be translated, and the catalogues are complete."""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

HOME = pathlib.Path(__file__).resolve().parent.parent
SCREENSHOTS = sys.argv.pop()


def messages(catalogue):
    for message in ElementTree.parse(catalogue).iter('message'):
        translation = message.find('translation')
        forms = [form.text or '' for form in translation.iter('numerusform')] or [translation.text or '']
        yield message.findtext('source'), translation.get('type'), forms


class TranslationTest(unittest.TestCase):
    def test_new_text_stays_untranslated(self):
        with tempfile.TemporaryDirectory() as folder:
            shutil.copytree(HOME / 'translations', folder, dirs_exist_ok=True)
            run = subprocess.run([HOME / 'scripts/translations', folder], capture_output=True, text=True)
            self.assertEqual((run.returncode, run.stdout + run.stderr), (0, ''))
            for renewed in pathlib.Path(folder).glob('*.ts'):
                kept = HOME / 'translations' / renewed.name
                self.assertEqual(renewed.read_text(), kept.read_text(), 'run scripts/translations, then translate')

    def test_translation_loses_a_value(self):
        values = re.compile(r'%(?:[1-9]|n)')
        for catalogue in (HOME / 'translations').glob('*.ts'):
            for source, state, forms in messages(catalogue):
                self.assertIsNone(state, source)
                for form in forms:
                    self.assertTrue(form.strip(), source)
                    self.assertEqual(set(values.findall(form)) | {'%n'}, set(values.findall(source)) | {'%n'}, source)
                self.assertEqual('%n' in forms[-1], '%n' in source, source)

    def test_window_shows_a_literal_text(self):
        with tempfile.TemporaryDirectory() as folder:
            shown = subprocess.run([SCREENSHOTS, '--locale', 'brackets', folder], capture_output=True, text=True,
                                   check=True).stdout
        self.assertIn('Uploaded index.html', shown, 'the screens were not shown')
        sources = '\n'.join(path.read_text() for path in (HOME / 'src/ui').rglob('*.cpp'))
        literals = set(re.findall(r'(?<!#include )"([^"\\\n]*[A-Za-z]{3,}[^"\\\n]*)"', sources))
        literals.remove('My website')  # a sample has that name
        texts = [part for text in re.sub('</?span>', '', shown).splitlines() for part in [text, *text.split(', ')]]
        for literal in filter(re.compile('[A-Z]|[a-z]+ ').match, literals):
            pattern = re.compile(re.sub('%[1-9n]', '.+', re.escape(literal)))
            self.assertFalse([text for text in texts if pattern.fullmatch(text)], literal)


unittest.main()
