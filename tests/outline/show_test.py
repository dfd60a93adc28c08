"""tavlin show: columns, marks, labels, paths, parts, looks."""
import os
import subprocess
import time

import driver
from driver import Item, archives


def rich(text, *runs):
    """Attributed text: runs are (length, PostScript name of the font or None, more attributes)."""
    stored = []
    for length, font, *more in runs:
        attributes = dict(*more)
        if font:
            attributes['NSFont'] = archives.Instance('NSFont', {
                'NSName': archives.Value(font), 'NSSize': 13.0, 'NSfFlags': 16})
        stored.append((length, archives.dictionary(attributes)))
    if len(stored) == 1:
        return archives.attributed(text, stored[0][1])
    return archives.attributed(text, *stored)


GARDEN = [
    Item('Spring', note='wake the beds\n\nslowly', expanded=True, kids=[
        Item('Loosen the soil', checked=True), Item('Sow\nunder glass', kids=[Item('Basil')])]),
    Item('Summer', shows=False, kids=[Item('Water'), Item('Pick')]),
    Item(None, note=''),
]


class Show(driver.Case):
    def show(self, items, *options, **settings):
        return self.ok('show', *options, self.save('d.tavlin', items, **settings))

    def test_an_outline(self):
        self.assertEqual(self.show(GARDEN, '--checks=never'), '''\
Spring
    wake the beds

    slowly
  Loosen the soil
  Sow
  under glass
    Basil
Summer
  Water
  Pick


''')

    def test_marks(self):
        self.assertEqual(self.show(GARDEN, '--no-notes'), '''\
[-] Spring
  [x] Loosen the soil
  [ ] Sow
      under glass
    [ ] Basil
    Summer
  [ ] Water
  [ ] Pick
[ ]
''')

    def test_marks_show_when_one_that_shows_is_checked(self):
        self.assertEqual(self.show([Item('a'), Item('b', checked=False)]), 'a\nb\n')
        self.assertEqual(self.show([Item('a'), Item('b', checked=True, shows=False)]), 'a\nb\n')
        self.assertEqual(self.show([Item('a'), Item('b', checked=True)]), '[ ] a\n[x] b\n')
        self.assertEqual(self.show([Item('a')], '--checks=always'), '[ ] a\n')
        all_checked = [Item('a', kids=[Item('b', checked=True), Item('c', checked=True)])]
        self.assertEqual(self.show(all_checked), '[*] a\n  [x] b\n  [x] c\n')

    def test_marks_of_a_part_are_those_of_the_whole(self):
        self.assertEqual(self.show([Item('a', checked=True, kids=[Item('b')])], '--item=1.1'), '[-] b\n')

    def test_paths_and_labels(self):
        self.assertEqual(self.show(GARDEN[:1], '--checks=never', '--no-notes', '--paths'),
                         '1 Spring\n  1.1 Loosen the soil\n  1.2 Sow\n      under glass\n    1.2.1 Basil\n')
        self.assertEqual(self.show(GARDEN[:1], '--no-notes', '--numbers=harvard'),
                         '[-] I. Spring\n  [x] A. Loosen the soil\n  [ ] B. Sow\n'
                         '         under glass\n    [ ] 1. Basil\n')

    def test_labels_as_the_document_says(self):
        settings = {'selectedNumberLabelFormat': 'numberLabelFormatHarvard'}
        self.assertEqual(self.show([Item('a')], '--numbers', **settings), 'I. a\n')
        self.assertEqual(self.show([Item('a')], '--numbers=legal', **settings), '1 a\n')
        self.assertEqual(self.show([Item('a')], '--numbers=document'), '1 a\n')

    def test_depth_and_expansion(self):
        self.assertEqual(self.show(GARDEN, '--no-notes', '--checks=never', '--depth=1'), 'Spring\nSummer\n\n')
        self.assertEqual(self.show(GARDEN, '--no-notes', '--checks=never', '--expanded'),
                         'Spring\n  Loosen the soil\n  Sow\n  under glass\nSummer\n\n')

    def test_an_item(self):
        options = ('--no-notes', '--checks=never')
        self.assertEqual(self.show(GARDEN, *options, '--item', '1.2'), 'Sow\nunder glass\n  Basil\n')
        self.assertEqual(self.show(GARDEN, *options, '--paths', '--item=2', '--depth', '2'),
                         '2 Summer\n  2.1 Water\n  2.2 Pick\n')
        file = self.save('d.tavlin', GARDEN)
        for path in ('0', '1.0', '9', '1.9', 'x', '1.', '.1', '1..2', '-1', '', '1,2', '01',
                     '99999999999999999999'):
            self.assertIn(file, self.fails('show', '--item=' + path, file), path)

    def test_several_files(self):
        a, b = self.save('a.tavlin', [Item('first')]), self.save('b.tavlin', [Item('second')])
        self.assertEqual(self.ok('show', a, b), '%s:\nfirst\n\n%s:\nsecond\n' % (a, b))

    def test_failures_do_not_stop_the_rest(self):
        good, gone = self.save('a.tavlin', [Item('first')]), str(self.folder / 'gone.tavlin')
        empty, text = self.folder / 'empty.tavlin', self.folder / 'text.tavlin'
        empty.write_bytes(b'')
        text.write_text('no outline')
        result = driver.run('show', gone, empty, good, text, self.folder)
        self.assertEqual(result.status, 2)
        self.assertEqual(result.out, good + ':\nfirst\n')
        lines = result.err.splitlines()
        self.assertEqual(lines[0], 'tavlin: %s: No such file or directory' % gone)
        self.assertEqual(lines[1], 'tavlin: %s: Document contains no data' % empty)
        self.assertTrue(lines[2].startswith('tavlin: %s: ' % text))
        self.assertEqual(lines[3], 'tavlin: %s: Is a directory' % self.folder)
        self.assertEqual(len(lines), 4)

    def test_text_into_a_pipe_is_as_it_is(self):
        items = [Item('\x1b[31mred \u202e'), Item('x\ud800y')]
        self.assertEqual(self.show(items), '\x1b[31mred \u202e\nx\ufffdy\n')

    def test_text_on_a_terminal_is_not_obeyed(self):
        file = self.save('d.tavlin', [Item('\x1b[2J\x07\x9b \u202eleft\u2069 e\u0301 \U0001f469\u200d\U0001f33e')])
        status, shown = driver.on_terminal('show', file)
        self.assertEqual(status, 0)
        self.assertEqual(shown.decode(), '\\x1b[2J\\x07\\u{9b} \\u{202e}left\\u{2069} '
                         'e\u0301 \U0001f469\u200d\U0001f33e\n')

    def test_looks(self):
        items = [Item(rich('plain bold both', (6, 'Helvetica'), (5, 'Helvetica-Bold'),
                           (4, 'Helvetica-BoldOblique'))),
                 Item(rich('under gone', (5, None, {'NSUnderline': 1}), (1, None),
                           (4, None, {'NSStrikethrough': 1}))),
                 Item(rich('link', (4, None, {'NSLink': 'http://a.b/\u00e9 '})))]
        file = self.save('d.tavlin', items)
        colored = ('plain \x1b[1mbold \x1b[0m\x1b[1;3mboth\x1b[0m\n'
                   '\x1b[4munder\x1b[0m \x1b[9mgone\x1b[0m\n'
                   '\x1b]8;;http://a.b/%C3%A9%20\x1b\\\x1b[4mlink\x1b[0m\x1b]8;;\x1b\\\n')
        self.assertEqual(self.ok('show', '--color=always', file), colored)
        self.assertEqual(self.ok('show', file), 'plain bold both\nunder gone\nlink\n')
        self.assertEqual(driver.on_terminal('show', file)[1].decode(), colored)
        for more in ({'environment': {'NO_COLOR': '1'}}, {'environment': {'TERM': 'dumb'}}):
            self.assertNotIn(b'\x1b', driver.on_terminal('show', file, **more)[1])
        self.assertNotIn(b'\x1b', driver.on_terminal('show', '--color=never', file)[1])

    def test_wide_labels_align_further_lines(self):
        items = [Item('a\nb')]
        self.assertEqual(self.show(items, '--numbers', documentNumberLabelFormatPrefix='第'),
                         '第1 a\n    b\n')

    def test_marks_and_labels_do_not_delay_the_first_line(self):
        items = [Item('item %d' % i, checked=i % 2 == 0, kids=[Item('x', checked=True)])
                 for i in range(20000)]
        file = self.save('d.tavlin', items)

        def seconds(*options):
            """Of the processor, until the pipe is full of what comes first."""
            process = subprocess.Popen([driver.PROGRAM, 'show', *options, file],
                                       env=driver.ENVIRONMENT, stdout=subprocess.PIPE)
            first = process.stdout.readline()
            time.sleep(0.1)
            process.kill()
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            process.stdout.close()
            return usage.ru_utime, first
        plain, all_derived = [], []
        for _ in range(7):
            plain.append(seconds('--checks=never', '--paths'))
            all_derived.append(seconds('--numbers'))
        self.assertEqual(all_derived[0][1], b'[x] 1 item 0\n')
        self.assertLess(min(all_derived)[0], 2 * min(plain)[0])

    def test_a_document_without_marks(self):
        self.assertEqual(self.show([Item('a'), Item('checkStatus', kids=[Item('b')])]),
                         'a\ncheckStatus\n  b\n')
        self.assertEqual(self.show([Item('a', checked=False)]), 'a\n')

    def test_many_levels(self):
        item = Item('deepest')
        for _ in range(20000):
            item = Item('x', kids=[item])
        self.assertEqual(self.show([item], '--depth=2', '--checks=always'), '[ ] x\n  [ ] x\n')
        self.assertEqual(self.ok('show', '--item=' + '.'.join(['1'] * 20001),
                                 self.folder / 'd.tavlin'), 'deepest\n')


if __name__ == '__main__':
    driver.main()
