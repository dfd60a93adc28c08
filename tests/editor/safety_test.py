"""Nothing that was typed is lost: kills, lost terminals, other programs, other editors."""
import os
import random
import signal
import subprocess
import termios
import time

import terminal


class Safety(terminal.Case):
    def other_program_saves(self):
        self.tavlin.run('item', 'add', self.file, '--title', 'Other')

    def test_a_killed_editor_loses_nothing(self):
        self.document('One\n')
        editor = self.edit()
        editor.press('o', '=Two', 'Enter', '=Three', 'Tab', 'Escape', 'x', 'n', '=half a no')
        editor.kill()
        self.assertEqual(self.saved(), 'One\n')
        editor = self.edit(ready='There is unsaved work')
        editor.press('y')
        editor.shows('here again')
        self.assertEqual(editor.titles(), ['One', 'Two', '  Three', editor.titles()[-1]])
        self.assertEqual(editor.titles()[-1].strip(), 'half a no')
        editor.press('Ctrl-S')
        editor.shows('Saved')
        self.assertEqual(self.saved(), 'One\nTwo\n\tThree\n\t\t> half a no\n')
        self.assertEqual(editor.quit('q'), 0)
        self.assertEqual(self.state_files(), [])

    def test_recovered_work_is_undone_as_one_and_kept_again(self):
        self.document('One\n')
        before = self.json()
        editor = self.edit()
        editor.press('o', '=Two', 'Escape', 'g', 'd', 'u')
        editor.kill()
        editor = self.edit(ready='unsaved work')
        editor.press('Enter')
        editor.press('G', 'o', '=Three', 'Escape')
        editor.kill()
        editor = self.edit(ready='unsaved work')
        editor.press('r')
        editor.shows('Three')
        self.assertEqual(editor.titles(), ['One', 'Two', 'Three'])
        editor.press('u', 'Ctrl-S')
        editor.quit('q')
        self.assertEqual(self.json(), before)

    def test_unsaved_work_can_be_given_up_or_left(self):
        self.document('One\n')
        editor = self.edit()
        editor.press('d')
        editor.kill()
        self.assertEqual(self.edit(ready='unsaved work').quit('q'), 0)
        editor = self.edit(ready='unsaved work')
        editor.press('n')
        self.assertEqual(editor.titles(), ['One'])
        editor.quit('q')
        self.edit(ready='[ ] One').quit('q')
        self.assertEqual(self.state_files(), [])

    def test_unsaved_work_on_a_file_that_changed(self):
        self.document('One\n')
        editor = self.edit()
        editor.press('o', '=Two', 'Escape')
        time.sleep(0.5)  # the copy of the document is written meanwhile
        editor.kill()
        self.other_program_saves()
        editor = self.edit(ready='unsaved work')
        editor.press('r')
        self.assertEqual(editor.titles(), ['One', 'Two'])
        editor.press('Ctrl-S')
        editor.shows('Another program has changed the file')
        editor.press('Escape')
        self.assertEqual(self.saved(), 'One\nOther\n')
        editor.press('Ctrl-S', 'o')
        editor.shows('Saved')
        self.assertEqual(self.saved(), 'One\nTwo\n')

    def test_unsaved_work_whose_document_is_gone_stays(self):
        self.document('One\n')
        editor = self.edit()
        editor.press('o', '=Two', 'Escape')
        time.sleep(0.5)
        editor.kill()
        self.other_program_saves()
        base = [name for name in self.state_files() if name.endswith('.base')][0]
        os.remove(self.folder + '/state/tavlin/' + base)
        editor = self.edit(ready='unsaved work')
        editor.press('r')
        editor.shows('Only a part')
        self.assertEqual(editor.titles(), ['One', 'Other'])
        editor.quit('q')
        self.assertEqual([name[-11:] for name in self.state_files()], ['.unread.log'])

    def test_a_new_file_is_recovered_too(self):
        editor = self.edit()
        editor.press('o', '=Only', 'Escape')
        editor.kill()
        self.assertFalse(os.path.exists(self.file))
        editor = self.edit(ready='unsaved work')
        editor.press('r', 'Ctrl-S')
        editor.shows('Saved')
        self.assertEqual(self.saved(), 'Only\n')

    def test_kills_at_random_moments(self):
        """What was typed and seen on the screen a second before is there."""
        generator = random.Random(3)
        for round_ in range(6):
            self.document('Start\n')
            editor = self.edit()
            typed = []
            for count in range(generator.randrange(1, 6)):
                typed.append('line %d of %d' % (count, round_))
                editor.press('o', '=' + typed[-1], *generator.choice([('Escape',), (), ('Escape', 'x'),
                                                                     ('Tab', 'Escape')]))
                if editor.screen.cursor.hidden is False:
                    editor.press('Escape')
            seen = editor.titles()
            time.sleep(generator.random() * 0.1)
            editor.kill()
            editor = self.edit(ready='unsaved work')
            editor.press('r')
            self.assertEqual(editor.titles(), seen)
            editor.press('Ctrl-S')
            self.assertEqual(editor.quit('q'), 0)
            self.assertEqual([line.strip() for line in self.saved().splitlines()],
                             ['Start', *typed])

    def test_signals_keep_the_work_and_restore_the_terminal(self):
        for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
            self.document('One\n')
            editor = self.edit(ready='help')
            editor.press('e', '=!')
            editor.kill(number)
            self.assertEqual(editor.process.exitstatus, 2)
            self.assertIn(b'\x1b[?1049l', editor.output)
            self.assertIn(b'unsaved work is kept', editor.output)
            editor = self.edit(ready='unsaved work')
            editor.press('r')
            editor.shows('One!')
            editor.press('q', 'n')

    def test_a_lost_terminal(self):
        self.document('One\n')
        editor = self.edit()
        editor.press('e', '=!')
        editor.process.close(force=False)
        time.sleep(0.3)
        editor = self.edit(ready='unsaved work')
        editor.press('r')
        editor.shows('One!')

    def test_suspending(self):
        self.document('One\n')
        editor = terminal.Editor(['bash', '--norc', '--noediting', '-i'], self.environment)
        self.editors.append(editor)
        editor.send('%s edit %s\r' % (terminal.Case.program, self.file))
        editor.shows('[ ] One')
        shell = editor.process.pid
        with open('/proc/%d/task/%d/children' % (shell, shell)) as file:
            process = int(file.read().split()[0])
        os.kill(process, signal.SIGTSTP)
        editor.shows('Stopped')
        self.assertTrue(termios.tcgetattr(editor.process.fileno())[3] & termios.ICANON)
        editor.send('fg\r')
        editor.wait(lambda: editor.lines()[0] == '  [ ] One', 'not drawn again')
        editor.press('e', '=!', 'Escape', 'Ctrl-S')
        self.assertEqual(self.saved(), 'One!\n')

    def test_two_editors(self):
        self.document('One\n')
        editor = self.edit()
        second = subprocess.run(['script', '-qec', '%s edit %s' % (terminal.Case.program, self.file),
                                 '/dev/null'], env=self.environment, capture_output=True, text=True,
                                stdin=subprocess.DEVNULL)
        self.assertIn('another editor is editing it (process %d)' % editor.process.pid, second.stdout)
        self.assertEqual(second.returncode, 2)
        editor.press('e', '=!', 'Escape', 'Ctrl-S')
        self.assertEqual(editor.quit('q'), 0)
        self.assertEqual(self.edit().quit('q'), 0)

    def test_a_file_that_changed_on_the_disk(self):
        self.document('One\n')
        editor = self.edit()
        editor.press('e', '=!', 'Escape')
        self.other_program_saves()
        editor.press('Ctrl-S')
        editor.shows('Another program has changed the file')
        editor.press('a')
        editor.shows('Save as:')
        editor.press('Ctrl-U', '=' + self.folder + '/mine.tavlin', 'Enter')
        editor.shows('Saved: ' + self.folder)
        self.assertEqual(self.tavlin.run('show', self.folder + '/mine.tavlin'), 'One!\n')
        self.assertEqual(self.saved(), 'One\nOther\n')
        editor.quit('q')
        editor = self.edit()
        editor.press('d')
        self.other_program_saves()
        editor.press('Ctrl-S', 'r')
        editor.shows('Read again')
        self.assertEqual(editor.titles(), ['One', 'Other', 'Other'])

    def test_quitting_asks(self):
        self.document('One\n')
        editor = self.edit()
        editor.press('e', '=!', 'Escape', 'q')
        editor.shows('Save the changes?')
        editor.press('Escape')
        editor.shows('help')
        self.assertEqual(editor.quit('q', 'n'), 0)
        self.assertEqual(self.saved(), 'One\n')
        editor = self.edit()
        editor.press('e', '=!')
        self.assertEqual(editor.quit('Ctrl-Q', 'y'), 0)
        self.assertEqual(self.saved(), 'One!\n')
        self.assertEqual(self.state_files(), [])

    def test_reverting(self):
        self.document('One\n')
        editor = self.edit()
        editor.press('d', 'R')
        editor.shows('Give up all changes')
        editor.press('y')
        editor.shows('[ ] One')
        self.assertEqual(editor.quit('q'), 0)

    def test_saving_as_does_not_replace_unasked(self):
        self.document('One\n')
        other = self.folder + '/other.tavlin'
        self.tavlin.run('new', other)
        editor = self.edit()
        editor.press('S', 'Ctrl-U', '=' + other, 'Enter')
        editor.shows('There is such a file already')
        editor.press('Escape')
        self.assertEqual(self.tavlin.run('show', other), '')
        editor.press('S', 'Ctrl-U', '=' + other, 'Enter', 'o')
        editor.shows('Saved')
        self.assertEqual(self.tavlin.run('show', other), 'One\n')
        editor.quit('q')

    def test_a_new_document(self):
        editor = self.edit()
        self.assertEqual(editor.quit('q'), 0)
        self.assertFalse(os.path.exists(self.file))
        editor = self.edit()
        editor.press('Enter', '=First', 'Escape', 'Ctrl-S')
        editor.shows('Saved')
        self.assertEqual(self.saved(), 'First\n')
        self.assertEqual(self.tavlin.run('properties', self.file), self.properties_of_new())

    def properties_of_new(self):
        self.tavlin.run('new', self.folder + '/new.tavlin')
        return self.tavlin.run('properties', self.folder + '/new.tavlin')

    def test_nothing_is_written_when_nothing_changed(self):
        self.document('One\n')
        before = os.stat(self.file).st_mtime_ns
        editor = self.edit()
        editor.press('e', '=!', 'Escape', 'u', 'Ctrl-S')
        editor.shows('nothing to save')
        editor.quit('q')
        self.assertEqual(os.stat(self.file).st_mtime_ns, before)

    def test_dry_run_and_backup(self):
        self.document('One\n')
        editor = self.edit('--dry-run')
        editor.press('d', 'Ctrl-S')
        editor.shows('Not saved: nothing is written in a dry run')
        editor.press('q', 'n')
        self.assertEqual((self.saved(), self.state_files()), ('One\n', []))
        editor = self.edit('--backup')
        editor.press('d', 'Ctrl-S')
        editor.shows('Saved')
        self.assertEqual(self.tavlin.run('show', self.file + '~'), 'One\n')

    def test_what_cannot_be_edited(self):
        self.document('One\n')
        for arguments, environment, message in (
                ((self.file,), {'TERM': 'dumb'}, 'the terminal dumb cannot show a full screen'),
                ((self.file,), {'TERM': 'no-such-kind'}, 'the terminal no-such-kind cannot'),
                ((self.folder,), {}, 'Is a directory'), (('/etc/hostname',), {}, '/etc/hostname: ')):
            result = subprocess.run(['script', '-qec', ' '.join([terminal.Case.program, 'edit',
                                                                 *arguments]), '/dev/null'],
                                    env={**self.environment, **environment}, capture_output=True,
                                    text=True, stdin=subprocess.DEVNULL)
            self.assertIn(message, result.stdout)
            self.assertEqual(result.returncode, 2)
        result = subprocess.run([terminal.Case.program, 'edit', self.file], env=self.environment,
                                capture_output=True, text=True)
        self.assertEqual((result.returncode, result.stderr),
                         (2, 'tavlin: %s: editing needs a terminal\n' % self.file))

    def test_without_a_place_for_the_journal(self):
        self.document('One\n')
        editor = self.edit(XDG_STATE_HOME='/proc/none')
        editor.press('e', '=!', 'Escape')
        editor.shows('not kept safe')
        editor.press('Ctrl-S')
        editor.shows('Saved')
        self.assertEqual(self.saved(), 'One!\n')

    def test_titles_never_reach_the_terminal_raw(self):
        self.document('bell \x07 escape \x1b[31m csi \x9b2J override \u202e tab \\t end\n')
        editor = self.edit()
        editor.shows('bell \\x07 escape \\x1b[31m csi \\u{9b}2J override \\u{202e} tab')
        self.assertNotIn(b'\x1b[31m', editor.output)
        self.assertNotIn(b'\xc2\x9b', editor.output)
        self.assertNotIn('\u202e'.encode(), editor.output)
        self.assertNotIn(b'\x07', editor.output)


if __name__ == '__main__':
    terminal.main()
