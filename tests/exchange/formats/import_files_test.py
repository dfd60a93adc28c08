"""Files of the kinds that people have, in ../import: each comes in with its words, or is refused with a message."""
import pathlib
import re
import sys
import xml.etree.ElementTree as xml

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent.parent / 'outline'))
import driver
import html5lib
import markdown_text

FILES = pathlib.Path(__file__).resolve().parent.parent / 'import'
REFUSED = {
    'latin-1-invalid.md': 'line 1: not UTF-8', 'front-matter-invalid.md': 'line 2: front matter',
    'external-entity.opml': 'external entity', 'undeclared-entity.opml': 'undefined entity',
    'unbound-prefix.opml': 'unbound prefix', 'mismatched.opml': 'mismatched tag', 'truncated.opml': 'line 1',
    'duplicate-attribute.opml': 'duplicate attribute', 'bare-ampersand.opml': 'line 1', 'control-character.opml': 'line 1',
    'two-tops.opml': 'junk after document element', 'html-page.opml': 'not OPML', 'rss.opml': 'not OPML',
    'no-xml.opml': 'line 1', 'empty.opml': 'no element found', 'encoding-unknown.opml': 'x-nothing',
    'encoding-wrong.opml': 'line 1'}


def words_of(text):
    return re.findall(r'\w+', text)


def words_of_markdown(content):
    """What an independent reader shows, and scripts and remarks as they stand."""
    if content.startswith(b'\xff\xfe'):
        content = content.decode('utf-16').encode()
    content = re.sub(rb'\A\xef\xbb\xbf', b'', content)
    text = re.sub(rb'\A---\r?\n(?!\s*\n).*?^(---|\.\.\.)$', b'', content, flags=re.S | re.M)
    page = html5lib.parse(markdown_text.html_of(text, ('table', 'strikethrough', 'tasklist')))
    return [word for text in page.itertext() for word in words_of(text)]


def words_of_opml(content):
    top = xml.fromstring(content)
    words = []
    for node in top.iter():
        if node.tag.endswith('outline'):
            words += words_of(node.get('text', node.get('title', '')) + ' ' + node.get('_note', ''))
    return words


class ImportFiles(driver.Case):
    def test_every_file(self):
        files = sorted(FILES.iterdir())
        self.assertGreater(len(files), 140)
        for file in files:
            with self.subTest(file.name):
                self.one(file)

    def one(self, file):
        out = self.folder / 'out.tavlin'
        result = driver.run('import', '-f', '-o', out, file)
        if file.name in REFUSED:
            self.assertEqual(result.status, 2)
            self.assertTrue(result.err.startswith('tavlin: %s: ' % file), result.err)
            self.assertIn(REFUSED[file.name], result.err)
            self.assertEqual(result.err.count('\n'), 1)
            return
        self.assertEqual(result.status, 0, result)
        has = self.ok('show', out)
        content = file.read_bytes()
        encoding = re.search(rb'encoding="([^"]*)"', content[:80])
        if file.suffix == '.opml' and encoding and not content.startswith(b'\xff\xfe'):
            name = encoding.group(1).decode()
            text = content.decode(name).lstrip('\ufeff')
            content = re.sub(r'\A<\?xml.*?\?>', '', text).encode()
        want = words_of_markdown(content) if file.suffix == '.md' else words_of_opml(content)
        self.assertEqual([word for word in want if word not in has], [])


if __name__ == '__main__':
    driver.main()
