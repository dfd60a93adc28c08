"""Every key of the editor, in a terminal."""
import json
import os

import terminal

GARDEN = 'Garden\n\tBeds\n\t\tLeeks\n\t\tPeas\n\tTools\n\t\tSpade\nHouse\n\tRoof\n'


class Keys(terminal.Case):
    def selected(self, editor):
        """The title in the line that is reversed."""
        for row, line in enumerate(editor.lines()[:-2]):
            if editor.screen.buffer[row][editor.columns - 1].reverse:
                return editor.titles()[[i for i, one in enumerate(editor.lines()[:-2])
                                        if one.strip()].index(row)].strip()
        return None

    def moves(self, editor, *steps):
        for key, title in steps:
            editor.press(key)
            self.assertEqual(self.selected(editor), title, (key, editor.text()))

    def test_moving(self):
        self.document(GARDEN)
        editor = self.edit()
        self.assertEqual(editor.titles(), self.shown().splitlines())
        self.assertEqual(self.selected(editor), 'Garden')
        self.moves(editor, ('Down', 'Beds'), ('j', 'Leeks'), ('Up', 'Beds'), ('k', 'Garden'),
                   ('k', 'Garden'), ('G', 'Roof'), ('Down', 'Roof'), ('g', 'Garden'),
                   ('End', 'Roof'), ('Home', 'Garden'), ('Right', 'Beds'), ('l', 'Leeks'),
                   ('l', 'Leeks'), ('Left', 'Beds'), ('J', 'Tools'), ('K', 'Beds'), ('p', 'Garden'))
        self.assertEqual(editor.quit('q'), 0)
        self.assertEqual(self.state_files(), [])

    def test_folding(self):
        self.document(GARDEN)
        editor = self.edit()
        editor.press('Down', 'Left')
        self.assertEqual(editor.titles(), ['Garden', '  Beds', '  Tools', '    Spade', 'House', '  Roof'])
        editor.press('h')
        self.assertEqual(self.selected(editor), 'Garden')
        editor.press('h')
        self.assertEqual(editor.titles(), ['Garden', 'House', '  Roof'])
        editor.press('Right')
        self.assertEqual(editor.titles(), ['Garden', '  Beds', '  Tools', '    Spade', 'House', '  Roof'])
        editor.press('+')
        self.assertEqual(len(editor.titles()), 8)
        editor.press('-')
        self.assertEqual(editor.titles(), ['Garden', 'House'])
        for level, count in (('2', 5), ('1', 2), ('3', 8), ('9', 8), ('1', 2)):
            editor.press(level)
            self.assertEqual(len(editor.titles()), count, level)
        # folding is kept when it is saved, and makes no question
        editor.press('Ctrl-S')
        self.assertEqual(self.shown('--expanded'), 'Garden\nHouse\n')
        editor.press('+')
        self.assertEqual(editor.quit('q'), 0)
        self.assertEqual(self.shown('--expanded'), 'Garden\nHouse\n')

    def test_folding_is_undone(self):
        self.document(GARDEN)
        before = self.json()
        editor = self.edit()
        editor.press('-')
        editor.shows('[ ] House')
        editor.press('u')
        editor.shows('Collapse All Items')
        self.assertEqual(len(editor.titles()), 8)
        editor.press('Left')
        editor.press('u', 'Ctrl-S')
        editor.quit('q')
        self.assertEqual(self.json(), before)

    def test_new_items(self):
        self.document('One\n\tInside\nTwo\n')
        editor = self.edit()
        editor.press('G', 'o', '=Three', 'Enter', '=Four', 'Escape')
        editor.press('g', 'Enter', '=First inside', 'Escape')
        editor.press('Left', 'Left', 'o', '=Between', 'Escape', 'Ctrl-S')
        editor.shows('Saved')
        self.assertEqual(self.saved(), 'One\n\tFirst inside\n\tInside\nBetween\nTwo\nThree\nFour\n')
        # each item is one step of undo
        for title in ('Between', 'Collapse', 'First inside', 'Four', 'Three'):
            editor.press('u')
            editor.shows('Undone: Collapse' if title == 'Collapse' else 'Undone: Add Item')
            self.assertNotIn('] ' + title, editor.text())
        editor.press('Ctrl-S')
        self.assertEqual(self.saved(), 'One\n\tInside\nTwo\n')
        editor.quit('Ctrl-Q')

    def test_editing_a_title(self):
        self.document('naïve 👩\u200d👩\u200d👧 end\n')
        editor = self.edit()
        editor.press('e', 'Left', 'Left', 'Left', 'Left', 'Backspace', 'Home', '=>', 'End', '=!', 'Escape')
        editor.press('Ctrl-S')
        self.assertEqual(self.shown(), '>naïve  end!\n')
        editor.press('u', 'Ctrl-S')
        self.assertEqual(self.shown(), 'naïve 👩\u200d👩\u200d👧 end\n')
        editor.press('F2', 'Ctrl-Left', 'Ctrl-Left', 'Ctrl-W', 'Escape', 'Ctrl-S')
        self.assertNotIn('naïve', self.shown())
        editor.press('Ctrl-Z', 'e', 'Ctrl-A', 'Delete', 'Escape', 'Ctrl-S')
        self.assertEqual(self.shown(), 'aïve 👩\u200d👩\u200d👧 end\n')

    def test_splitting_and_joining(self):
        self.document('Black berries\n\tSeeds\nPlums\n')
        before = self.json()
        editor = self.edit()
        editor.press('-', 'e', *['Left'] * 8, 'Enter', '=X', 'Escape', 'Ctrl-S')
        self.assertEqual(self.saved(), 'Black\n\tSeeds\nX berries\nPlums\n')
        editor.press('e', 'Home', 'Backspace', '=,', 'Escape', 'Ctrl-S')
        self.assertEqual(self.saved(), 'Black,X berries\n\tSeeds\nPlums\n')
        editor.press('G', 'e', 'Home', 'Enter', 'Escape', 'Ctrl-S')
        self.assertEqual(self.saved(), 'Black,X berries\n\tSeeds\n\nPlums\n')
        editor.press('e', 'Home', 'Alt-Enter', 'Escape', 'Ctrl-S')
        self.assertEqual(self.saved().splitlines()[-1], '\\nPlums')
        editor.press(*['u'] * 20, 'Ctrl-S')
        self.assertEqual(self.json(), before)

    def test_notes(self):
        self.document('One\nTwo\n')
        editor = self.edit()
        editor.press('n', '=first', 'Enter', '=second', 'Escape')
        editor.shows('second')
        editor.press('Ctrl-S')
        self.assertEqual(self.saved(), 'One\n\t> first\n\t> second\nTwo\n')
        editor.press('n', 'Up', 'Home', '=the ', 'Escape', 'Ctrl-S')
        self.assertEqual(self.saved(), 'One\n\t> the first\n\t> second\nTwo\n')
        editor.press('u', 'u', 'Ctrl-S')
        self.assertEqual(self.saved(), 'One\nTwo\n')

    def test_structure(self):
        self.document('a\nb\nc\nd\n')
        before = self.json()
        editor = self.edit()
        steps = [(('j', 'Tab'), 'a\n\tb\nc\nd\n'), (('j', 'Tab'), 'a\n\tb\n\tc\nd\n'),
                 (('Alt-Up',), 'a\n\tc\n\tb\nd\n'), (('Alt-Down',), 'a\n\tb\n\tc\nd\n'),
                 (('Shift-Tab',), 'a\n\tb\nc\nd\n'), (('Alt-Up',), 'c\na\n\tb\nd\n'),
                 (('j', 'd'), 'c\nd\n')]
        for keys, text in steps:
            editor.press(*keys, 'Ctrl-S')
            self.assertEqual(self.saved(), text, keys)
        for _, text in reversed(steps[:-1]):
            editor.press('u', 'Ctrl-S')
            self.assertEqual(self.saved(), text)
        editor.press('u', 'Ctrl-S')
        self.assertEqual(self.json(), before)
        for _, text in steps:
            editor.press('Ctrl-R', 'Ctrl-S')
            self.assertEqual(self.saved(), text)
        editor.press('Ctrl-Y')
        editor.shows('nothing to redo')

    def test_what_is_refused_is_said(self):
        self.document('a\n')
        editor = self.edit()
        for key, message in (('Tab', 'nothing above'), ('Shift-Tab', 'at the top already'),
                             ('Alt-Up', 'first of its siblings'),
                             ('Alt-Down', 'last of its siblings'), ('u', 'nothing to undo'),
                             ('Ctrl-S', 'nothing to save')):
            editor.press(key)
            editor.shows(message)
        editor.quit('q')

    def test_check_marks(self):
        self.document('a\n\tb\n\tc\nd\n')
        editor = self.edit()
        marks = lambda: [line.strip(' ▾▸')[:3] for line in editor.outline()]
        self.assertEqual(marks(), ['[ ]'] * 4)
        editor.press('j', 'Space')
        self.assertEqual(marks(), ['[-]', '[x]', '[ ]', '[ ]'])
        editor.press('j', 'x')
        self.assertEqual(marks(), ['[*]', '[x]', '[x]', '[ ]'])
        editor.press('k', 'k', 'x')
        self.assertEqual(marks(), ['[x]', '[x]', '[x]', '[ ]'])
        editor.press('x', 'j', 'x', 'j', 'x', 'u', 'Ctrl-S')
        self.assertEqual(marks(), ['[-]', '[ ]', '[x]', '[ ]'])
        self.assertEqual(self.shown(), '[-] a\n  [ ] b\n  [x] c\n[ ] d\n')

    def test_marking_several(self):
        self.document('a\nb\nc\nd\n')
        editor = self.edit()
        editor.press('j', 'v', 'j', 'v')
        editor.shows('2 marked')
        editor.press('Tab', 'Escape', 'Ctrl-S')
        self.assertEqual(self.saved(), 'a\n\tb\n\tc\nd\n')
        editor.press('v', 'k', 'v', 'x', 'd', 'Ctrl-S')
        self.assertEqual(self.saved(), 'a\nd\n')
        editor.press('u', 'Ctrl-S')
        self.assertEqual(self.shown(), '[*] a\n  [x] b\n  [x] c\n[ ] d\n')

    def test_clipboard(self):
        self.document('a\n\tb\nc\n')
        editor = self.edit()
        editor.press('Ctrl-C', 'G', 'Ctrl-V', 'Ctrl-S')
        self.assertEqual(self.saved(), 'a\n\tb\nc\na\n\tb\n')
        self.assertIn(b'\x1b]52;c;YQoJYgo=\x07', editor.output)
        editor.press('g', 'Ctrl-X', 'Ctrl-S')
        self.assertEqual(self.saved(), 'c\na\n\tb\n')
        editor.press('Ctrl-V', 'Ctrl-S')
        self.assertEqual(self.saved(), 'c\na\n\tb\na\n\tb\n')
        editor.press('u', 'u', 'u', 'Ctrl-S')
        self.assertEqual(self.saved(), 'a\n\tb\nc\n')

    def test_pasted_text(self):
        self.document('a\nz\n')
        editor = self.edit()
        editor.paste('one\n\ttwo\r\n\n\t    three\nfour\n')
        editor.press('Ctrl-S')
        self.assertEqual(self.saved(), 'a\none\n\ttwo\n\t\tthree\nfour\nz\n')
        editor.press('u', 'e')
        editor.paste('1\n2\n3')
        editor.press('=!', 'Escape', 'Ctrl-S')
        self.assertEqual(self.saved(), 'a1\n2\n3!\nz\n')
        editor.press('o')
        editor.paste('just \x1b[31mone')
        editor.press('Escape')
        editor.shows('just \\x1b[31mone')

    def test_search(self):
        self.document(GARDEN + 'Another leek\n\t> with peas\n')
        editor = self.edit()
        editor.press('-', '/', '=lee')
        editor.shows('Leeks')
        self.assertEqual(self.selected(editor), 'Leeks')
        editor.press('Escape')
        self.assertEqual((self.selected(editor), len(editor.titles())), ('Garden', 4))
        editor.press('Ctrl-F', '=pea', 'Enter')
        self.moves(editor, ('F3', 'Another leek'), ('F3', 'Peas'), ('Shift-F3', 'Another leek'))
        editor.press('/', '=nowhere')
        editor.shows('Not found')
        editor.press('Enter')
        self.assertEqual(self.selected(editor), 'Another leek')
        editor.quit('q')

    def test_numbers(self):
        self.document(GARDEN)
        editor = self.edit()
        editor.press('#')
        self.assertEqual(editor.titles(), self.shown('--numbers').splitlines())
        editor.press('j', 'd')
        self.assertEqual(editor.titles()[1], '  1.1 Tools')
        editor.press('#')
        self.assertEqual(editor.titles()[1], '  Tools')

    def test_pages(self):
        self.document(''.join('item %d\n' % i for i in range(1, 201)))
        editor = self.edit()
        self.moves(editor, ('PageDown', 'item 22'), ('PageDown', 'item 43'), ('PageUp', 'item 22'),
                   ('G', 'item 200'), ('PageUp', 'item 179'), ('g', 'item 1'))
        self.assertEqual(len(editor.outline()), 22)
        editor.press('G')
        self.assertEqual(editor.titles()[-1], 'item 200')
        self.assertEqual(len(editor.outline()), 22)

    def test_help(self):
        self.document('a\n')
        editor = self.edit()
        editor.press('?')
        editor.shows('Up, k')
        seen = editor.text()
        for _ in range(4):
            editor.press('PageDown')
            seen += editor.text()
        for entry in ('1 2 3 4 5 6 7 8 9', 'Shift-F3', 'Alt-Up', 'Space, x', 'Ctrl-Q, q', 'Alt-Enter', '#'):
            self.assertIn(entry, seen)
        editor.press('Escape')
        editor.shows('[ ] a')
        editor.quit('q')

    def test_keys_of_the_users_own(self):
        os.makedirs(self.folder + '/config/tavlin')
        with open(self.folder + '/config/tavlin/keys', 'w') as file:
            file.write('# mine\nCtrl-T indent\nt indent # too\nTab none\nx quit\n')
        self.document('a\nb\n')
        editor = self.edit()
        editor.press('j', 'Tab', 'Ctrl-S')
        self.assertEqual(self.saved(), 'a\nb\n')
        editor.press('t', 'Ctrl-S')
        self.assertEqual(self.saved(), 'a\n\tb\n')
        self.assertEqual(editor.quit('x'), 0)
        with open(self.folder + '/config/tavlin/keys', 'w') as file:
            file.write('\nx quti\n')
        self.edit(ready=None).shows('line 2: there is no command "quti"')

    def test_mouse(self):
        self.document(GARDEN)
        editor = self.edit()
        editor.send('\x1b[<0;12;3M\x1b[<0;12;3m')
        editor.read()
        self.assertEqual(self.selected(editor), 'Leeks')
        editor.send('\x1b[<0;3;2M')
        editor.read()
        self.assertEqual((self.selected(editor), len(editor.titles())), ('Beds', 6))
        editor.send('\x1b[<65;3;2M')
        editor.read()
        self.assertEqual(self.selected(editor), 'House')
        editor.send('\x1b[<0;4;1M')
        editor.read()
        self.assertIn('[x] Garden', editor.text())

    def test_rich_text_stays(self):
        rich = {'text': 'plain bold', 'runs': [{'length': 6}, {'length': 4, 'underline': 1}]}
        self.tavlin.run('import', '--from=json', '--force', '-o', self.file, '-',
                        input=json.dumps({'tavlin': 1, 'items': [{'title': rich}]}))
        editor = self.edit()
        editor.press('e', '=er', 'Home', '=The ', 'Escape', 'Ctrl-S')
        title = json.loads(self.json())['items'][0]['title']
        self.assertEqual((title['text'], [run['length'] for run in title['runs']],
                          title['runs'][1].get('underline')), ('The plain bolder', [10, 6], 1))


if __name__ == '__main__':
    terminal.main()
