"""Which items Markdown of people becomes, what is lost of it, what takes long; export and import as commands."""
import json
import os
import pathlib
import plistlib
import random
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent.parent / 'outline'))
import driver
import nasty
from driver import Item

SHOWN = (
    ('# A\n\ntext\nmore\n\n## B\n\n- one\n- two\n', 'A\n    text more\n  B\n    one\n    two\n'),
    ('first\n\nsecond\n', 'first\n    second\n'),
    ('Title\n=====\nSub\n---\n# Next\n', 'Title\n  Sub\nNext\n'),
    ('### deep\n# top\n', 'deep\ntop\n'),
    ('1. one\n2. two\n   - a\n   * b\n3) x\n', 'one\ntwo\n  a\n  b\nx\n'),
    ('- a\n\n  note\n\n  other\n', 'a\n    note\n\n    other\n'),
    ('- a\n\n      code\n        more\n', 'a\n    code\n      more\n'),
    ('# H\n```sh\nls -l\n```\n', 'H\n    ls -l\n'),
    ('- a\n- b\n\nbehind\n', 'a\nb\n    behind\n'),
    ('- a\n  - b\n\n  of a\n', 'a\n    of a\n  b\n'),
    ('- a  \n  b\\\n  c\n', 'a\nb\nc\n'),
    ('> quoted\n> text\n\n> - item\n', 'quoted text\nitem\n'),
    ('- <!-- -->\n\n  note\n', '\n    note\n'),
    ('- \n- -\n', '\n\n\n'),
    ('- - a\n', '\n  a\n'),
    ('| a | b |\n|---|---|\n| 1 | 2 |\n', 'a\tb\n1\t2\n'),
    ('- x<br>y\n', 'x\ny\n'),
    ('a &amp; &copy; \\* `b`\n', 'a & © * b\n'),
    ('<div>\nraw\n</div>\n', '<div>\nraw\n</div>\n'),
    ('# A\n- x\n# B\n', 'A\n  x\nB\n'),
    ('\ufeff# A\r\n\r\ntext\r\n', 'A\n    text\n'),
    ('![alt](p.png) [l](u) [r]\n\n[r]: http://x\n', 'alt l r\n'),
    ('Term[^1]\n\n[^1]: The note\n', 'Term[^1]\n    [^1]: The note\n'),
    ('---\n\ntitle: no\n\n---\n', 'title: no\n'),
    ('', ''),
)


class Structure(driver.Case):
    def imported(self, markdown):
        (self.folder / 'in.md').write_bytes(markdown if isinstance(markdown, bytes) else markdown.encode())
        result = driver.run('import', '-f', '-o', self.folder / 'o.tavlin', self.folder / 'in.md', timeout=100)
        self.assertEqual(result.status, 0, (markdown[:200], result))
        return self.folder / 'o.tavlin', result.err

    def test_items(self):
        for markdown, want in SHOWN:
            with self.subTest(markdown):
                self.assertEqual(self.ok('show', self.imported(markdown)[0]).replace('\u0009', '\t'), want)

    def test_marks(self):
        path, _ = self.imported('# H\n- [x] a\n- [ ] b\n- c\n- [X] d\n')
        self.assertEqual(self.ok('show', path), '    H\n  [x] a\n  [ ] b\n      c\n  [x] d\n')
        self.assertEqual(self.ok('export', '--to=markdown', path),
                         '- H\n  - [x] a\n  - [ ] b\n  - c\n  - [x] d\n')

    def test_losses(self):
        for markdown, lost in (('[a](b "title")', 1), ('```sh\nx\n```\n', 1), ('[a]: b\n\ntext\n', 1),
                               ('[a]: b\n\n[a]\n', 0), ('a\n', 0)):
            err = self.imported(markdown)[1]
            self.assertEqual(sum(int(word) for word in err.split() if word.isdigit()), lost, (markdown, err))

    def test_looks(self):
        markdown = '- **a** *b* ***c*** ~~d~~ `e` [f](http://g) **`h`**\n'
        self.assertEqual(self.ok('export', '--to=markdown', self.imported(markdown)[0]), markdown)
        self.assertEqual(self.ok('export', '--to=markdown', self.imported('__a__ <b>b</b> <i>c</i>\n')[0]),
                         '- **a** **b** *c*\n')

    def test_long_texts_are_read_as_short_ones(self):
        """Long ones are read piece by piece unless there may be definitions, which count everywhere."""
        dice = random.Random(8)
        blocks = ['- a\n', '- [ ] a\n\n  note\n\n  - b\n\n    deep\n', '* x\n\n', '1. one\n', '2) two\n\n   n\n', '# H\n',
                  '### h\n', 'S\n===\n', 'text\n', 'lazy\n- [x] y\nz\n', '```\n\ncode\n\n```\n', '```\n\nopen\n\n',
                  '~~~\n\n# no\n\n~~~\n', '> q\n\n', '> - q\n>\n>   r\n', '    indented\n\n    more\n', '<div>\n\n</div>\n\n',
                  '<pre>\n\n- in\n\n</pre>\n', '<!--\n\n- in\n\n-->\n', '<!-- open\n\n', '- <pre>\n\n  a\n\n', '- ```\n\n',
                  '|a|b|\n|-|-|\n|c|d|\n', '---\n', '-\n\n  x\n', '[x](y) **a** `b`\n', '\r\n', '  \n', '\t- t\n', 'a\r\n\r\n']
        for _ in range(12):
            # rarely, since nothing comes in but the rest of a text behind one
            rare = dice.sample([b for b in blocks if 'open' in b or '<pre>\n\n  a' in b], 1) * (dice.random() < 0.3)
            common = [b for b in blocks if 'open' not in b]
            text = ''.join(dice.choice(common) + dice.choice(['', '\n', '\n', '\n\n'])
                           for _ in range(40000))
            if rare:
                at = dice.randrange(len(text))
                text = text[:at] + '\n' + rare[0] + text[at:]
            got, want = [self.ok('export', '--to=json', self.imported(text + end)[0])
                         for end in ('\n\n# ];', '\n\n# ]:')]
            self.assertEqual(nasty.first_difference(
                got.replace('];', ']:').encode(), want.encode()) or (), ())
            self.assertGreater(got.count('"title"'), 1000 if not rare else 0)

    def test_nothing_hangs(self):
        n = 20000
        texts = {
            'strong': '*a **a ' * n + 'b' + ' a** a*' * n, 'closers': 'a_ ' * n, 'openers': '_a ' * n,
            'links': '[a](' * n, 'brackets': '[' * n + 'a' + ']' * n, 'images': '![' * n, 'quotes': '> ' * n + 'a',
            'references': '\n'.join('[%d]: x' % i for i in range(n)), 'backticks': ''.join('`' * i + 'a' for i in range(1000)),
            'comments': '</' + '<!--' * n, 'instructions': 'a <?' * n, 'declarations': 'a <!A ' * n, 'cdata': 'a <![CDATA[' * n,
            'nested list': ''.join(' ' * i + '* a\n' for i in range(1500)), 'table': '|a' * 2000 + '\n' + '|-' * 2000 + '\n' + '|x\n' * n,
            'zero': 'abc\0' * n, 'tildes': '~' * n + 'a', 'items': '- x\n' * n, 'entities': '&' * n + ';'}
        for name, text in texts.items():
            with self.subTest(name):
                begin = time.monotonic()
                path, _ = self.imported(text)
                self.assertLess(time.monotonic() - begin, 30)
        self.assertIn('a <?a <?', self.ok('show', self.imported(texts['instructions'])[0]))
        self.assertNotIn('\ufdd0', self.ok('show', self.imported(texts['declarations'])[0]))


class Memory(driver.Case):
    def test_reading_takes_less_than_thrice_what_is_made(self):
        if any('SAN_OPTIONS' in key for key in os.environ) or b'asan' in driver.PROGRAM.encode():
            self.skipTest('sanitizers need memory')
        source, made = self.folder / 'in.md', self.folder / 'made.tavlin'
        source.write_text(''.join('- [ ] item %d with **some** words\n\n  and a note of `it`\n\n' % i
                                  for i in range(50000)))
        self.ok('import', '-o', made, source)
        # in a process of its own: one that is started begins with the memory of who starts it
        peak = ('import os, sys; process = os.spawnv(os.P_NOWAIT, sys.argv[1], sys.argv[1:]); '
                'status, usage = os.wait4(process, 0)[1:]; print(status, usage.ru_maxrss)')
        status, kilobytes = subprocess.run(
            [sys.executable, '-c', peak, driver.PROGRAM, 'import', '--dry-run', '-f', '-o', made, source],
            capture_output=True, check=True).stdout.split(b'\n')[-2].split()
        self.assertEqual(int(status), 0)
        self.assertLess(int(kilobytes) * 1024, 3 * made.stat().st_size)


class Commands(driver.Case):
    def setUp(self):
        super().setUp()
        self.document = self.save('d.tavlin', [
            Item('a', expanded=True, kids=[Item('b', expanded=True, kids=[Item('c')])]), Item('d')],
                                  {'title': 'T'})
        self.out = self.folder / 'out'

    def test_formats_by_name(self):
        for name, begin in (('o.txt', 'a\n'), ('o.md', '---\n'), ('o.OPML', '<?xml'), ('o.html', '<!'), ('o.json', '{')):
            self.ok('export', '-o', self.folder / name, self.document) if name != 'o.txt' else \
                driver.run('export', '-o', self.folder / name, self.document)
            text = (self.folder / name).read_text()
            self.assertTrue(text.lower().startswith(begin.lower()), text[:80])
            if name not in ('o.html',):
                self.ok('import', '-o', self.folder / (name + '.tavlin'), self.folder / name)
                self.assertEqual(self.ok('show', self.folder / (name + '.tavlin')), 'a\n  b\n    c\nd\n')

    def test_export_of_an_item(self):
        self.assertIn('- b\n  - c\n', self.ok('export', '--to=markdown', '--item', '1.1', self.document))
        self.fails('export', '--to=markdown', '--item', '7', self.document, says='there is no item 7')
        self.fails('export', '--to=markdown', '--item', 'x', self.document, says='is no path')

    def test_what_export_refuses(self):
        self.fails('export', self.document, says='--to')
        self.fails('export', '-o', self.folder / 'x.doc', self.document, says='tells no format')
        self.fails('export', '--to=pdf', self.document)
        self.fails('export', '--to=markdown', '--numbers', self.document, says='--numbers')
        self.fails('export', '--to=markdown', self.folder / 'none')
        self.fails('export', '--to=opml', '-o', self.folder / 'no' / 'x.opml', self.document)
        self.assertFalse((self.folder / 'no').exists())

    def test_export_replaces_whole_or_not_at_all(self):
        self.out.write_text('old')
        deep = Item('x')
        item = deep
        for _ in range(40000):
            item.kids = [Item('x')]
            item = item.kids[0]
        self.fails('export', '--to=markdown', '-o', self.out, self.save('deep.tavlin', [deep]), says='too deep')
        self.assertEqual(self.out.read_text(), 'old')
        self.ok('export', '--to=markdown', '-o', self.out, self.document)
        self.assertIn('- a', self.out.read_text())
        self.ok('export', '--to=markdown', '-o', '/dev/null', self.document)
        self.assertEqual(self.fails('export', '--to=markdown', '-o', '/dev/full', self.document).count('\n'), 1)

    def test_long_names_of_options(self):
        (self.folder / 'in').write_text('- x\n')
        self.ok('export', '--to', 'markdown', '--output', self.out, self.document)
        self.assertEqual(self.out.read_text(), self.ok('export', '--to=markdown', self.document))
        made = self.folder / 'made.tavlin'
        self.ok('import', '--from', 'markdown', '--output', made, self.folder / 'in')
        self.fails('import', '--from=markdown', '--output=%s' % made, self.folder / 'in', says='--force')
        self.ok('import', '--from=markdown', '--force', '--backup', '--output=%s' % made, self.folder / 'in')
        self.assertTrue((self.folder / 'made.tavlin~').exists())
        self.assertIn('1 item ', self.ok('import', '--from=markdown', '--dry-run', '--force', '-o', made,
                                         self.folder / 'in'))

    def test_numbers(self):
        page = self.ok('export', '--to=html', '--numbers=harvard', self.document)
        self.assertIn('I.', page)
        self.assertNotIn('1.1.1', page)
        self.assertEqual(self.ok('export', '--to=html', '--numbers', self.document),
                         self.ok('export', '--to=html', '--numbers=document', self.document))
        self.assertIn('1.1.1', self.ok('export', '--to=html', '--numbers=legal', self.document))

    def test_standard_input_and_output(self):
        with open(self.document, 'rb') as file:
            content = file.read()
        self.assertIn('- a', self.ok('export', '--to=markdown', '-', stdin=content))
        self.ok('import', '--from=markdown', '-o', self.out, '-', stdin=b'- x\n')
        self.assertEqual(self.ok('show', self.out), 'x\n')

    def test_import_into(self):
        (self.folder / 'in.md').write_text('---\ntitle: other\n---\n- x\n  - y\n- z\n')
        result = driver.run('import', '--into', self.document, self.folder / 'in.md')
        self.assertEqual((result.status, result.err), (
            0, 'tavlin: %s: 1 value has no place in a document\n' % (self.folder / 'in.md')))
        (self.folder / 'in.md').write_text('- x\n  - y\n- z\n')
        self.assertEqual(self.ok('show', '--paths', self.document),
                         '1 a\n  1.1 b\n    1.1.1 c\n2 d\n3 x\n  3.1 y\n4 z\n')
        self.ok('import', '--into', self.document, '--under', '1.1', '--backup', self.folder / 'in.md')
        self.assertEqual(self.ok('show', '--item=1.1', self.document), 'b\n  c\n  x\n    y\n  z\n')
        self.assertTrue(os.path.exists(self.document + '~'))
        self.assertEqual(json.loads(self.ok('info', '--json', self.document))['properties'], {'title': 'T'})
        before = os.stat(self.document)
        self.assertIn('3 items', self.ok('import', '--dry-run', '--into', self.document, self.folder / 'in.md'))
        (self.folder / 'empty.md').write_text('')
        self.ok('import', '--into', self.document, self.folder / 'empty.md')
        self.assertEqual(os.stat(self.document).st_mtime_ns, before.st_mtime_ns)
        self.fails('import', '--into', self.document, '--under', '9', self.folder / 'in.md', says='there is no item 9')
        self.fails('import', '--into', self.folder / 'none', self.folder / 'in.md', says='none')

    def test_import_refuses_to_replace(self):
        (self.folder / 'in.md').write_text('- x\n')
        self.out.write_text('old')
        self.fails('import', '-o', self.out, self.folder / 'in.md', says='--force')
        self.assertEqual(self.out.read_text(), 'old')
        self.assertIn('1 item ', self.ok('import', '-n', '-f', '-o', self.out, self.folder / 'in.md'))
        self.assertEqual(self.out.read_text(), 'old')
        self.ok('import', '-f', '--backup', '-o', self.out, self.folder / 'in.md')
        self.assertEqual((self.folder / 'out~').read_text(), 'old')
        self.assertEqual(self.ok('show', self.out), 'x\n')

    def test_what_import_refuses(self):
        (self.folder / 'in.md').write_text('- x\n')
        self.fails('import', self.folder / 'in.md', says='--into')
        self.fails('import', '-o', self.out, '--into', self.document, self.folder / 'in.md', says='exclude')
        self.fails('import', '-o', self.out, '--under', '1', self.folder / 'in.md', says='--under')
        self.fails('import', '-o', self.out, self.folder / 'in', says='tells no format')
        self.fails('import', '-o', self.out, '--from=html', self.folder / 'in.md')
        self.fails('import', '-o', self.out, self.folder / 'none.md')
        self.assertFalse(self.out.exists())

    def test_failures_name_the_file_that_is_meant(self):
        (self.folder / 'in.md').write_text('- x\n')
        gone, folder = self.folder / 'no' / 'x.md', self.folder / 'folder'
        folder.mkdir()
        for arguments, file in (
                (('import', '-o', gone, self.folder / 'in.md'), gone),
                (('import', '-n', '-o', gone, self.folder / 'in.md'), gone),
                (('import', '-n', '-f', '-o', folder, self.folder / 'in.md'), folder),
                (('import', '-n', '-o', self.folder / 'in.md' / 'x', self.folder / 'in.md'),
                 self.folder / 'in.md' / 'x'),
                (('import', '-o', self.document, self.folder / 'in.md'), self.document),
                (('import', '--into', gone, self.folder / 'in.md'), gone),
                (('import', '--into', self.document, '--under', '9', self.folder / 'in.md'), self.document),
                (('export', '-o', gone, self.document), gone),
                (('export', '--to=text', '-o', self.document, self.document), self.document)):
            err = self.fails(*arguments)
            self.assertTrue(err.startswith('tavlin: %s: ' % file), err)
            self.assertNotIn('in.md: ' + str(self.folder), err)
        self.assertFalse(gone.parent.exists())

    def test_force_is_for_files_that_are_made(self):
        (self.folder / 'in.md').write_text('- x\n')
        self.fails('import', '--into', self.document, '--force', self.folder / 'in.md', says='--force needs -o')

    def test_every_loss_is_counted(self):
        folded = self.save('f.tavlin', [Item('a', kids=[Item('b', expanded=True)])])
        for name, lost in (('text', 1), ('markdown', 1), ('opml', 0), ('html', 0), ('json', 0)):
            self.assertEqual(self.lost('export', '--to=' + name, folded), lost, name)
        settings = self.save('s.tavlin', [Item('a')], window='{{0, 0}, {640, 480}}')
        for name, lost in (('text', 1), ('markdown', 1), ('opml', 1), ('html', 1), ('json', 0)):
            self.assertEqual(self.lost('export', '--to=' + name, settings), lost, name)
        more = self.folder / 'top.tavlin'
        archive = plistlib.loads(pathlib.Path(self.save('t.tavlin', [Item('a')])).read_bytes())
        archive['$top']['other'] = archive['$top']['root']
        more.write_bytes(plistlib.dumps(archive, fmt=plistlib.FMT_BINARY))
        for name in ('text', 'markdown', 'opml', 'html', 'json'):
            self.assertEqual(self.lost('export', '--to=' + name, more), 1, name)

    def test_what_stays_behind_is_counted(self):
        self.ok('export', '-o', self.folder / 'd.json', self.save(
            'p.tavlin', [Item('x')], {'title': 'T', 'authors': ['A']}, window='w'))
        self.assertEqual(self.lost('import', '--into', self.document, self.folder / 'd.json'), 3)

    def lost(self, *arguments):
        result = driver.run(*arguments)
        self.assertEqual(result.status, 0, result)
        return sum(int(word) for word in result.err.split() if word.isdigit())

    def test_losses_are_counted_in_one_line(self):
        path = self.save('r.tavlin', [Item(driver.archives.attributed('ab', driver.archives.dictionary(
            {'NSUnderline': 1, 'NSKern': 2}))), Item('x', other='y')])
        result = driver.run('export', '--to=opml', path)
        self.assertEqual(result.err, 'tavlin: %s: 2 attributes of text and 1 value have no place in opml\n' % path)
        self.assertEqual(result.status, 0)


if __name__ == '__main__':
    driver.main()
