"""tavlin find: patterns, places, marks, forms of output."""
import json

import driver
from driver import Item, run


class Find(driver.Case):
    def setUp(self):
        super().setUp()
        self.file = self.save('d.tavlin', [
            Item('a.b', note='x*y\nsecond a.b', checked=True, kids=[Item('axb'), Item('été C:\\d')]),
            Item('two a.b a.b\nlines', checked=False), Item('hidden a.b', checked=True, shows=False),
            Item(None)])

    def hits(self, *arguments):
        result = run('find', *arguments, self.file)
        self.assertEqual(result.err, '')
        lines = result.out.splitlines()
        self.assertEqual(result.status, 0 if lines else 1)
        for line in lines:
            self.assertTrue(line.startswith(self.file + ':'), line)
        return [line[len(self.file) + 1:] for line in lines]

    def test_lines(self):
        self.assertEqual(self.hits('a.b'), ['1:a.b', '1:note:second a.b', '1.1:axb',
                                            '2:two a.b a.b\\nlines', '3:hidden a.b'])
        self.assertEqual(self.hits('-F', 'x*y'), ['1:note:x*y'])
        self.assertEqual(self.hits('-F', '\\d'), ['1.2:été C:\\d'])
        self.assertEqual(self.hits('no such text'), [])

    def test_case(self):
        self.assertEqual(self.hits('ÉTÉ'), [])
        self.assertEqual(self.hits('-i', 'ÉTÉ'), ['1.2:été C:\\d'])
        self.assertEqual(self.hits('-i', '-F', 'c:\\D'), ['1.2:été C:\\d'])

    def test_where(self):
        self.assertEqual(self.hits('--in=note', 'a.b'), ['1:note:second a.b'])
        self.assertEqual(self.hits('--in', 'title', '^a.b$'), ['1:a.b', '1.1:axb'])
        self.assertEqual(len(self.hits('--in=all', 'a.b')), 5)

    def test_marks(self):
        self.assertEqual(self.hits('--checked', 'a.b'), ['1:a.b', '1:note:second a.b'])
        self.assertEqual(self.hits('--unchecked', 'a.b'), ['1.1:axb', '2:two a.b a.b\\nlines'])

    def test_words(self):
        file = self.save('w.tavlin', [Item('q1 q12'), Item('été'), Item('xq1'), Item('q1'), Item('日q1')])
        for pattern, paths in (('q1', ['1', '4']), ('t', []), ('été', ['2']), ('q12|xq1', ['1', '3'])):
            out = run('find', '-w', pattern, file).out
            self.assertEqual([line.split(':')[1] for line in out.splitlines()], paths, pattern)
        value = json.loads(self.ok('find', '--json', '-w', 'a', self.save('v.tavlin', [Item('a a ba a')])))
        self.assertEqual(value['matches'], [[0, 1], [2, 3], [7, 8]])

    def test_an_empty_pattern_matches_every_title_and_note(self):
        self.assertEqual(len(self.hits('')), 8)  # six titles, two lines of a note

    def test_names_and_counts(self):
        other = self.save('e.tavlin', [Item('nothing')])
        self.assertEqual(self.ok('find', '-l', 'a.b', other, self.file), self.file + '\n')
        self.assertEqual(self.ok('find', '-c', 'a.b', other, self.file),
                         '%s:0\n%s:4\n' % (other, self.file))
        self.assertEqual(run('find', '-c', 'zz', other).status, 1)
        self.assertEqual(run('find', '-l', 'zz', other).out, '')

    def test_json(self):
        file = self.save('j.tavlin', [Item('né nÉ', note='né\nx'), Item('s\ud800né'), Item('a\nné')])
        got = [json.loads(line) for line in self.ok('find', '--json', '-i', 'né', file).splitlines()]
        self.assertEqual(got, [
            {'file': file, 'path': '1', 'field': 'title', 'text': 'né nÉ', 'matches': [[0, 3], [4, 7]]},
            {'file': file, 'path': '1', 'field': 'note', 'text': 'né', 'matches': [[0, 3]]},
            {'file': file, 'path': '2', 'field': 'title', 'text': 's\ufffdné', 'matches': [[4, 7]]},
            {'file': file, 'path': '3', 'field': 'title', 'text': 'a\nné', 'matches': [[2, 5]]}])
        empty = json.loads(self.ok('find', '--json', 'x*', self.save('k.tavlin', [Item('éx')])))
        self.assertEqual(empty['matches'], [[0, 0], [2, 3], [3, 3]])

    def test_forms_of_output_exclude_each_other(self):
        for options in (('-l', '--json'), ('-c', '--json'), ('-l', '-c'), ('--json', '--count')):
            self.assertIn('excludes', self.fails('find', *options, 'a', self.file))

    def test_long_names_of_options(self):
        for short, long in (('-i', '--ignore-case'), ('-F', '--fixed-strings'), ('-w', '--word-regexp'),
                            ('-l', '--files-with-matches'), ('-c', '--count'), ('-j2', '--jobs=2')):
            for pattern in ('A.B', 'a.b', 'nes'):
                self.assertEqual(repr(run('find', short, pattern, self.file)),
                                 repr(run('find', long, pattern, self.file)))

    def test_patterns_that_are_none(self):
        for pattern in ('(', '[a', '*a', r'(a)\1', '(?=a)', '(?<!x)a'):
            self.assertEqual(self.fails('find', pattern, self.file).count('\n'), 1)
        self.assertIn(r'\1', self.fails('find', r'(a)\1', self.file))

    def test_time_is_linear(self):
        file = self.save('slow.tavlin', [Item('a' * 100 + '!')])
        self.assertEqual(run('find', '(a+)+$', file, timeout=20).status, 1)

    def test_folders(self):
        for name in ('b.tavlin', 'a.tavlin', 'sub/c.tavlin', 'sub/deep/d.tavlin', 'other.outline'):
            self.save('folder/' + name, [Item('needle')])
        (self.folder / 'folder' / 'sub' / 'link.tavlin').symlink_to('c.tavlin')
        (self.folder / 'folder' / 'loop').symlink_to('.')
        folder = self.folder / 'folder'
        names = ['a.tavlin', 'b.tavlin', 'sub/c.tavlin', 'sub/link.tavlin', 'sub/deep/d.tavlin']
        out = self.ok('find', 'needle', folder)
        self.assertEqual(out, ''.join('%s/%s:1:needle\n' % (folder, name) for name in names))
        for jobs in ('-j1', '-j3'):
            self.assertEqual(self.ok('find', jobs, 'needle', folder), out)

    def test_a_file_that_cannot_be_read_is_reported(self):
        gone = str(self.folder / 'gone.tavlin')
        result = run('find', 'a.b', gone, self.file)
        self.assertEqual((result.status, len(result.out.splitlines())), (2, 5))
        self.assertEqual(result.err, 'tavlin: %s: No such file or directory\n' % gone)

    def test_colors(self):
        self.assertEqual(self.ok('find', '--color=always', '-F', 'a.b', '--in=title', '--unchecked', self.file),
                         self.file + ':2:two \x1b[1;31ma.b\x1b[0m \x1b[1;31ma.b\x1b[0m\\nlines\n')
        self.assertNotIn('\x1b', self.ok('find', 'a.b', self.file))


if __name__ == '__main__':
    driver.main()
