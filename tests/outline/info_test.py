"""tavlin info: properties, counts, words."""
import json
import os

import driver
from driver import Item, archives

PROPERTIES = {'title': 'Gar"den\nbeds', 'authors': ['Ann', 'Ben, B.'], 'organizations': ['Org'],
              'copyright': '(c)', 'subject': 's', 'keywords': ['a,b', 'c'], 'comment': 'k'}


class Info(driver.Case):
    def numbers(self, items, **more):
        file = self.save('n.tavlin', items, **more)
        value = json.loads(self.ok('info', '--json', file))
        self.assertEqual(value.pop('file'), file)
        self.assertEqual(value.pop('bytes'), os.path.getsize(file))
        value.pop('properties')
        return value

    def test_counts(self):
        self.assertEqual(self.numbers([]), {'items': 0, 'depth': 0, 'checked': 0, 'rich': 0, 'words': 0})
        items = [Item('one two', checked=True, kids=[Item('three', note='four\nfive  six')]),
                 Item('x', checked=True, shows=False), Item(None, checked=False)]
        self.assertEqual(self.numbers(items), {'items': 4, 'depth': 2, 'checked': 1, 'rich': 0, 'words': 7})
        rich = [Item(archives.attributed('a b')), Item('c', note=archives.attributed('d'))]
        self.assertEqual(self.numbers(rich), {'items': 2, 'depth': 1, 'checked': 0, 'rich': 2, 'words': 4})

    def test_words_are_parted_by_any_blank(self):
        blanks = [chr(c) for c in range(0x110000) if chr(c).isspace()]
        self.assertEqual(self.numbers([Item('x'.join(blanks))])['words'], len(blanks) - 1)
        self.assertEqual(self.numbers([Item('a\u200bb\u00adc')])['words'], 1)

    def test_properties(self):
        file = self.save('p.tavlin', [], PROPERTIES)
        self.assertEqual(json.loads(self.ok('info', '--json', file))['properties'], PROPERTIES)
        self.assertEqual(self.ok('info', file), '''\
title:          Gar"den\\nbeds
authors:        Ann,Ben\\, B.
organizations:  Org
copyright:      (c)
subject:        s
keywords:       a\\,b,c
comment:        k
items:          0
depth:          0
checked:        0
rich:           0
words:          0
bytes:          %d
''' % os.path.getsize(file))

    def test_no_or_odd_properties(self):
        for properties in (None, {}, {'title': 5, 'keywords': 'no list', 'authors': [7]}):
            file = self.save('p.tavlin', [], properties)
            value = json.loads(self.ok('info', '--json', file))['properties']
            self.assertEqual(value, {'authors': []} if properties else {})

    def test_surrogates(self):
        file = self.save('s.tavlin', [], {'title': 'a\ud800b', 'keywords': ['\udc00']})
        value = json.loads(self.ok('info', '--json', file))['properties']
        self.assertEqual(value, {'title': 'a\ufffdb', 'keywords': ['\ufffd']})

    def test_several_files(self):
        a, b = self.save('a.tavlin', [Item('x')]), self.save('b.tavlin', [])
        lines = self.ok('info', '--json', a, b, a, '-j4').splitlines()
        self.assertEqual([json.loads(line)['file'] for line in lines], [a, b, a])
        text = self.ok('info', a, b)
        self.assertTrue(text.startswith(a + ':\nitems:'), text)
        self.assertIn('\n\n' + b + ':\nitems:', text)

    def test_one_that_cannot_be_read_leaves_no_empty_line(self):
        a, b, gone = self.save('a.tavlin', []), self.save('b.tavlin', []), self.folder / 'gone.tavlin'
        for jobs in ('-j1', '-j3'):
            result = driver.run('info', jobs, gone, a, gone, b)
            self.assertEqual(result.status, 2)
            self.assertTrue(result.out.startswith(a + ':\nitems:'), result)
            self.assertEqual(result.out.count('\n\n'), 1)
            self.assertIn('\n\n' + b + ':\n', result.out)

    def test_jobs_and_colors(self):
        files = [self.save('%d.tavlin' % i, [Item('x')]) for i in range(9)]
        one = self.ok('info', '-j', '1', *files)
        for more in (['--jobs=4'], ['-j4'], ['--color=never'], ['--color', 'always']):
            self.assertEqual(self.ok('info', *more, *files), one)

    def test_a_terminal_obeys_nothing(self):
        file = self.save('t.tavlin', [], {'title': '\x1b[31m'})
        self.assertIn(b'title:          \\x1b[31m\n', driver.on_terminal('info', file)[1])


if __name__ == '__main__':
    driver.main()
