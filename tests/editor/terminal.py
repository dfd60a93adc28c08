"""The editor in a terminal: a process behind a pseudo terminal, and the screen that it draws."""
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import pexpect
import pyte

ARROWS = {'Up': 'A', 'Down': 'B', 'Right': 'C', 'Left': 'D', 'Home': 'H', 'End': 'F'}
KEYS = {name: '\x1b[' + letter for name, letter in ARROWS.items()}
KEYS.update({'Alt-' + name: '\x1b[1;3' + letter for name, letter in ARROWS.items()})
KEYS.update({'Ctrl-' + name: '\x1b[1;5' + letter for name, letter in ARROWS.items()})
KEYS.update({'Ctrl-' + letter: chr(ord(letter) - 64) for letter in 'ABCDEFGKLQRSUVWXYZ'})
KEYS.update({'Enter': '\r', 'Alt-Enter': '\x1b\r', 'Escape': '\x1b', 'Tab': '\t',
             'Shift-Tab': '\x1b[Z', 'Backspace': '\x7f', 'Delete': '\x1b[3~', 'Space': ' ',
             'PageUp': '\x1b[5~', 'PageDown': '\x1b[6~', 'F2': '\x1bOQ', 'F3': '\x1bOR',
             'Shift-F3': '\x1b[1;2R'})


class Program:
    """The program without a screen."""

    def __init__(self, path, environment):
        self.path = path
        self.environment = environment

    def run(self, *arguments, input=None):
        result = subprocess.run([self.path, *map(str, arguments)], input=input, text=True,
                                capture_output=True, env=self.environment, timeout=120)
        if result.returncode:
            raise AssertionError((arguments, result.returncode, result.stderr))
        return result.stdout


class Editor:
    """A running editor.  Keys are sent and the screen is looked at as a user would."""

    def __init__(self, command, environment, columns=80, rows=24):
        self.columns, self.rows = columns, rows
        self.screen = pyte.Screen(columns, rows)
        self.stream = pyte.ByteStream(self.screen)
        self.sent = b''
        self.process = pexpect.spawn(command[0], [str(one) for one in command[1:]],
                                     dimensions=(rows, columns), env=environment, timeout=30)
        self.process.delaybeforesend = None
        self.output = b''

    def sleeps(self):
        try:
            with open('/proc/%d/stat' % self.process.pid) as file:
                return file.read().rpartition(')')[2].split()[0] not in 'RD'
        except OSError:
            return True

    def read(self, seconds=0.02):
        """Takes in what comes until nothing has come for so long and the editor waits."""
        quiet = 0
        while quiet < 2:
            try:
                bytes_ = self.process.read_nonblocking(65536, timeout=seconds)
                self.output += bytes_
                self.stream.feed(bytes_)
                quiet = 0
            except pexpect.TIMEOUT:
                quiet += self.sleeps()
            except pexpect.EOF:
                return False
        return True

    def wait(self, condition, what, seconds=30):
        end = time.monotonic() + seconds
        while True:
            alive = self.read()
            if condition():
                return
            if time.monotonic() > end or not alive:
                raise AssertionError('%s\n%s' % (what, self.text()))

    def lines(self):
        return [line.rstrip() for line in self.screen.display]

    def text(self):
        return '\n'.join(self.lines())

    def outline(self):
        """The lines with items and notes, as far as there are any."""
        return [line for line in self.lines()[:-2] if line.strip()]

    def titles(self):
        """The lines without marks, two blanks for each level."""
        return [re.sub(r'^( *)[▸▾+\- ] (?:\[.\]|   ) ?', r'\1', line)
                for line in self.outline()]

    def shows(self, text, seconds=30):
        self.wait(lambda: text in self.text(), 'no %r on the screen' % text, seconds)

    def send(self, text):
        self.process.send(text)

    def press(self, *keys):
        """Keys by name, and text to type behind "=": press("o", "=Leeks", "Escape")."""
        for key in keys:
            if key.startswith('=') and len(key) > 1:
                self.send(key[1:])
            else:
                self.send(KEYS.get(key, key))
            # an Escape and what follows at once would be another key
            if key == 'Escape':
                self.read(0.12)
        self.read()

    def paste(self, text):
        self.send('\x1b[200~' + text + '\x1b[201~')
        self.read()

    def resize(self, columns, rows):
        self.columns, self.rows = columns, rows
        self.screen.resize(rows, columns)
        self.process.setwinsize(rows, columns)
        self.read(0.2)

    def quit(self, *keys):
        """Sends keys that end the editor and answers its status."""
        self.press(*keys)
        self.wait(lambda: not self.process.isalive(), 'still running')
        return self.process.exitstatus

    def kill(self, number=signal.SIGKILL):
        self.process.kill(number)
        self.wait(lambda: not self.process.isalive(), 'still running')
        self.read()


class Case(unittest.TestCase):
    program = None
    term = 'xterm-256color'

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix='tavlin-editor.')
        self.addCleanup(shutil.rmtree, self.folder, True)
        self.environment = {'PATH': os.environ['PATH'], 'HOME': self.folder, 'LC_ALL': 'C.UTF-8',
                            'XDG_STATE_HOME': self.folder + '/state', 'TERM': self.term,
                            'XDG_CONFIG_HOME': self.folder + '/config'}
        for name in ('ASAN_OPTIONS', 'UBSAN_OPTIONS'):
            if name in os.environ:
                self.environment[name] = os.environ[name]
        self.tavlin = Program(Case.program, self.environment)
        self.file = self.folder + '/garden.tavlin'
        self.editors = []
        self.addCleanup(lambda: [one.process.close(force=True) for one in self.editors])

    def document(self, text):
        """A document of text as `export --to=text` writes it."""
        self.tavlin.run('import', '--from=text', '--force', '-o', self.file, '-', input=text)

    def edit(self, *options, columns=80, rows=24, ready='help', **environment):
        editor = Editor([Case.program, 'edit', *options, self.file],
                        {**self.environment, **environment}, columns, rows)
        self.editors.append(editor)
        if ready:
            editor.shows(ready)
        return editor

    def saved(self):
        return self.tavlin.run('export', '--to=text', self.file)

    def shown(self, *options):
        return self.tavlin.run('show', *options, self.file)

    def json(self):
        return self.tavlin.run('export', '--to=json', self.file)

    def state_files(self):
        folder = self.folder + '/state/tavlin'
        return sorted(os.listdir(folder)) if os.path.isdir(folder) else []


def main():
    Case.program = os.path.abspath(sys.argv.pop(1))
    unittest.main()
