"""Whole stories, in the kinds of terminals that people have."""
import os
import shutil

import terminal

GARDEN = '''\
Garden
\tBeds
\t\tLeeks
\t\tMöhren
\t\t日本のかぶ
\tTools
\t\tSpade
\t\t\t> sharpen it,
\t\t\t> then oil it
House
\tRoof
'''


class Story:
    def test_the_garden_from_nothing(self):
        editor = self.edit()
        editor.press('Enter', '=Garden', 'Enter', '=Beds', 'Tab', 'Enter', '=Leeks', 'Tab', 'Enter',
                     '=Möhren', 'Enter', '=日本のかぶ', 'Enter', '=Tools', 'Shift-Tab', 'Enter',
                     '=Spade', 'Tab', 'Escape', 'n', '=sharpen it,', 'Enter', '=then oil it',
                     'Escape', 'o', '=House', 'Shift-Tab', 'Shift-Tab', 'Enter', '=Roof', 'Tab',
                     'Escape', 'Ctrl-S')
        editor.shows('Saved')
        self.assertEqual(self.saved(), GARDEN)
        self.assertEqual([line.strip() for line in editor.titles()],
                         [line.strip('\t> ') for line in GARDEN.splitlines()])
        # and back to nothing, step by step, and forth again
        editor.press(*['u'] * 60)
        editor.shows('nothing to undo')
        self.assertEqual(editor.outline(), [])
        editor.press('Ctrl-S')
        self.assertEqual(self.saved(), '')
        editor.press(*['Ctrl-R'] * 60, 'Ctrl-S')
        self.assertEqual(self.saved(), GARDEN)
        self.assertEqual(editor.quit('q'), 0)

    def test_tidying_a_list(self):
        lines = ['item %d' % (i * 37 % 200) for i in range(200)]
        self.document('\n'.join(lines) + '\n')
        before = self.json()
        editor = self.edit()
        expected = list(lines)
        editor.press('PageDown', 'v', 'j', 'v', 'd')
        del expected[21:23]
        editor.press('j', 'Tab', 'j', 'Tab')
        editor.press('Ctrl-S')
        expected[22:24] = ['\t' + line for line in expected[22:24]]
        self.assertEqual(self.saved().splitlines(), expected)
        editor.press('g', 'Ctrl-X', 'G', 'Ctrl-V', 'Alt-Up', 'Ctrl-S')
        expected.insert(len(expected) - 2, expected.pop(0))
        self.assertEqual(self.saved().splitlines(), expected)
        editor.resize(40, 10)
        self.assertIn(expected[-2], editor.text())
        editor.press('/', '=item 111', 'Enter', 'x')
        self.assertIn('[x] item 111', editor.text())
        editor.resize(100, 30)
        self.assertIn('[x] item 111', editor.text())
        editor.press(*['u'] * 12, 'Ctrl-S')
        self.assertEqual(self.json(), before)
        self.assertEqual(editor.quit('q'), 0)

    def test_a_small_terminal(self):
        self.document(GARDEN)
        editor = self.edit(columns=20, rows=5, ready='Garden')
        self.assertEqual(editor.titles()[:3], ['Garden', '  Beds', '    Leeks'])
        editor.press('G')
        self.assertIn('Roof', editor.text())
        editor.press('e', '= with a title that is long', 'Escape', 'Ctrl-S')
        self.assertIn('Roof with a title that is long', self.saved())
        for size in ((5, 2), (1, 1), (300, 3), (20, 5)):
            editor.resize(*size)
            editor.press('k', 'j')
        self.assertIn('Roof', editor.text())
        self.assertEqual(editor.quit('q'), 0)

    def test_pasting_ten_thousand_lines(self):
        self.document('One\nTwo\n')
        editor = self.edit()
        editor.paste(''.join('pasted line %d\n' % i for i in range(10000)))
        editor.shows('10000 items pasted')
        self.assertEqual(editor.titles()[1], 'pasted line 0')
        editor.press('u', 'Ctrl-S')
        editor.shows('nothing to save')
        editor.press('Ctrl-R', 'Ctrl-S')
        editor.shows('Saved')
        self.assertEqual(self.saved().splitlines()[-2:], ['pasted line 9999', 'Two'])

    def test_finding_and_checking_off(self):
        self.document(GARDEN)
        editor = self.edit()
        editor.press('-', '/', '=spade', 'Enter', 'x', '/', '=かぶ', 'Enter', 'Space', 'Ctrl-S')
        self.assertEqual(self.shown('--no-notes'), '[-] Garden\n  [-] Beds\n    [ ] Leeks\n'
                         '    [ ] Möhren\n    [x] 日本のかぶ\n  [*] Tools\n    [x] Spade\n'
                         '[ ] House\n  [ ] Roof\n')
        editor.quit('q')


class Xterm(Story, terminal.Case):
    term = 'xterm-256color'


class Tmux(Story, terminal.Case):
    term = 'tmux-256color'


class Screen(Story, terminal.Case):
    term = 'screen'


class Linux(Story, terminal.Case):
    term = 'linux'


class Vt100(Story, terminal.Case):
    term = 'vt100'


class Inside(terminal.Case):
    """In real terminals inside the terminal."""

    def play(self, command, name):
        if not shutil.which(command[0]):
            self.skipTest('there is no ' + command[0])
        self.document(GARDEN)
        editor = terminal.Editor([*command, '%s edit %s' % (terminal.Case.program, self.file)],
                                 {**self.environment, 'TERM': 'xterm-256color', 'SHELL': '/bin/sh',
                                  'TMUX_TMPDIR': self.folder, 'SCREENDIR': self.folder + '/s'})
        self.editors.append(editor)
        editor.shows('日本のかぶ')
        editor.press('G', 'Alt-Up', 'e', 'Ctrl-Left', '=big ', 'Escape', 'o', '=Cellar', 'Escape',
                     'Shift-Tab', 'F2', 'Alt-Enter', '=x', 'Backspace', 'Backspace', 'Escape', 'Ctrl-S')
        editor.shows('Saved')
        self.assertEqual(self.saved(), GARDEN.replace('Roof', 'big Roof') + 'Cellar\n', name)
        self.assertEqual(editor.quit('q'), 0)

    def test_in_tmux(self):
        self.play(['tmux', '-f', '/dev/null', '-u', '-L', 'test', 'new-session'], 'tmux')

    def test_in_screen(self):
        os.makedirs(self.folder + '/s', mode=0o700)
        self.play(['screen', '-c', '/dev/null', '-U', 'sh', '-c'], 'screen')


del Story

if __name__ == '__main__':
    terminal.main()
