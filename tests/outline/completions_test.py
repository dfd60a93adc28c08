"""Completions in the shells themselves, and the pages that come from the same table."""
import os
import pathlib
import pty
import select
import shutil
import signal
import subprocess
import unittest

import driver

SOURCE = pathlib.Path(__file__).resolve().parent.parent.parent

class Completions(driver.Case):
    def script(self, shell):
        path = self.folder / shell
        path.write_text(self.ok('completions', shell))
        return path

    def in_bash(self, *words):
        listed = ' '.join("'%s'" % word for word in words)
        code = ('source %s; COMP_WORDS=(tavlin %s); COMP_CWORD=%d; _tavlin; printf "%%s\\n" "${COMPREPLY[@]}"'
                % (self.script('bash'), listed, len(words)))
        done = subprocess.run(['bash', '--norc', '-c', code], capture_output=True, text=True,
                              cwd=self.folder, check=True)
        return done.stdout.split()

    def test_bash(self):
        self.assertEqual(self.in_bash('sh'), ['show'])
        self.assertEqual(self.in_bash('show', '--no'), ['--no-notes'])
        self.assertEqual(self.in_bash('show', '--checks', '=', 'a'), ['auto', 'always'])
        self.assertEqual(self.in_bash('show', '--checks', 'n'), ['never'])
        self.save('one.tavlin', [])
        self.assertEqual(self.in_bash('show', 'on'), ['one.tavlin'])
        self.assertEqual(self.in_bash('find', '--color', '=', ''), ['auto', 'always', 'never'])

    @unittest.skipUnless(shutil.which('fish'), 'no fish')
    def test_fish(self):
        def complete(line):
            done = subprocess.run(['fish', '--no-config', '-c',
                                   'source %s; complete -C "%s"' % (self.script('fish'), line)],
                                  capture_output=True, text=True, check=True, cwd=self.folder,
                                  env={**driver.ENVIRONMENT, 'HOME': str(self.folder)})
            return [offer.split('\t')[0] for offer in done.stdout.splitlines()]
        self.assertEqual(complete('tavlin sh'), ['show'])
        self.assertEqual(complete('tavlin show --no-'), ['--no-notes'])
        self.assertEqual(sorted(complete('tavlin show --checks=')),
                         ['--checks=always', '--checks=auto', '--checks=never'])
        self.assertIn('--ignore-case', complete('tavlin find --'))
        self.assertNotIn('--ignore-case', complete('tavlin show --'))

    @unittest.skipUnless(shutil.which('zsh'), 'no zsh')
    def test_zsh(self):
        for line, wanted in (('tavlin sh', 'tavlin show'), ('tavlin show --no-n', '--no-notes'),
                             ('tavlin show --checks=nev', '--checks=never')):
            self.assertIn(wanted, self.in_zsh(line), line)

    def in_zsh(self, line):
        """What an interactive zsh shows once the tabulator was typed behind a line."""
        child, terminal = pty.fork()
        if child == 0:
            os.execvpe('zsh', ['zsh', '-f', '-i'], {**driver.ENVIRONMENT, 'HOME': str(self.folder),
                                                    'TERM': 'dumb', 'PS1': ''})
        try:
            setup = ('autoload -Uz compinit; compinit -u -d %s/dump; unsetopt zle_bracketed_paste; '
                     'source %s; print REA''DY\n' % (self.folder, self.script('zsh')))
            os.write(terminal, setup.replace('REA', 'REA""').encode())
            shown = self.read_until(terminal, 'READY')
            self.assertIn('READY', shown)
            os.write(terminal, line.encode() + b'\t')
            return self.read_until(terminal, None)
        finally:
            os.close(terminal)
            os.kill(child, signal.SIGKILL)
            os.waitpid(child, 0)

    def read_until(self, terminal, mark):
        """What comes until the mark does, or until nothing has come for two seconds."""
        shown = ''
        while select.select([terminal], [], [], 15 if mark else 2)[0]:
            shown += os.read(terminal, 65536).decode('utf-8', 'replace')
            if mark and mark in shown:
                break
        return shown

    def test_scripts_name_every_command(self):
        for shell in ('bash', 'zsh', 'fish'):
            script = self.ok('completions', shell)
            for line in self.ok('--help').split('Commands:\n')[1].split('\n\n')[0].splitlines():
                self.assertIn(line.split()[0], script)

    @unittest.skipUnless(shutil.which('mandoc'), 'no mandoc')
    def test_manual_pages_are_clean(self):
        made = pathlib.Path(driver.PROGRAM).parent.parent / 'outline' / 'tavlin.1'
        for page in (made, SOURCE / 'docs' / 'tavlin-keywords.1'):
            done = subprocess.run(['mandoc', '-T', 'lint', '-W', 'warning', str(page)],
                                  capture_output=True, text=True)
            self.assertEqual((done.returncode, done.stdout), (0, ''))
        self.assertIn('tavlin show', made.read_text())


if __name__ == '__main__':
    driver.main()
