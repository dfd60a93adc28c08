"""Private fonts in rich text, on machines with and without fonts.

    fonts_test.py TAVLIN-KEYWORDS
"""
import os
import subprocess
import sys
import tempfile
import unittest

from archives import Archive, attributed, dictionary, document, node
from kinds import font, properties

TOOL = sys.argv[1]
PRIVATE = ['.LucidaGrandeUI-Bold', '.HelveticaNeueDeskUI', '.Unknown-Italic']
MESSAGE = 'no fonts found: interface fonts in rich text are left'


class Fonts(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def place(self, name, content=''):
        path = os.path.join(self.folder.name, name)
        with open(path, 'wb') as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        return path

    def fonts_after_writing(self, environment):
        """The fonts in the saved document, and what was said on standard error."""
        items = [node({'title': attributed('rich', dictionary({'NSFont': font(name, 13.0, 1044)}))})
                 for name in PRIVATE * 2]
        path = self.place('document', document(
            node({'documentProperties': properties(['old'])}, items)))
        done = subprocess.run([TOOL, '-w', path, 'new'], env={**os.environ, **environment},
                              capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        with open(path, 'rb') as file:
            archive = Archive(file.read())
        names = [archive.objects[each['NSName'].data] for each in archive.objects
                 if isinstance(each, dict) and 'NSName' in each]
        return names, done.stderr

    def assert_left_and_said_once(self, environment):
        names, said = self.fonts_after_writing(environment)
        self.assertEqual(sorted(set(names)), sorted(PRIVATE))
        self.assertEqual(said.count(MESSAGE), 1, said)

    def test_without_fontconfig_the_fonts_stay_and_that_is_said_once(self):
        self.place('libfontconfig.so.1', 'no library')
        self.assert_left_and_said_once({'LD_LIBRARY_PATH': self.folder.name})

    def test_without_any_font_too(self):
        settings = self.place('fonts.conf', '<?xml version="1.0"?><fontconfig></fontconfig>')
        self.assert_left_and_said_once({'FONTCONFIG_FILE': settings})

    def test_with_fonts_bold_stays_bold(self):
        names, said = self.fonts_after_writing({})
        if MESSAGE in said:
            self.skipTest('no fonts here')
        self.assertEqual(said, '')
        for private in PRIVATE:
            self.assertNotIn(private, names)
        self.assertTrue(any('Bold' in name for name in names), names)
        self.assertTrue(any('Italic' in name or 'Oblique' in name for name in names), names)

    def test_nothing_is_said_where_no_font_is_private(self):
        self.place('libfontconfig.so.1', 'no library')
        path = self.place('plain', document(
            node({'documentProperties': properties(['old'])},
                 [node({'title': attributed('rich', dictionary({'NSFont': font('Odd-Face')}))})])))
        done = subprocess.run([TOOL, '-w', path, 'new'], capture_output=True, text=True,
                              env={**os.environ, 'LD_LIBRARY_PATH': self.folder.name})
        self.assertEqual((done.returncode, done.stderr), (0, ''))


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1])
