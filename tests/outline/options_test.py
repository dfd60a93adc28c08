"""The options that every command has which changes documents, by each of their names; which they are
is taken from the help, so that a command that comes new is missed here."""
import os
import re

import changing
import driver
from changing import OLD, rich
from driver import Item
from graphs import Graph

# What changes the document FILE, in which item 2 has a wrong parent link for check alone.
CHANGES = {
    'import': ['--from=text', '--into', 'FILE', 'IN'],
    'properties': ['FILE', '--set', 'title=New'],
    'convert': ['--rich', 'FILE'],
    'apply': ['FILE', 'OPERATIONS'],
    'check': ['--repair', 'FILE'],
    'keywords add': ['-k', 'new', 'FILE'],
    'keywords remove': ['-k', 'c', 'FILE'],
    'keywords set': ['-k', 'new', 'FILE'],
    'keywords rename': ['--from', 'c', '--to', 'new', 'FILE'],
    'item add': ['FILE', '--title', 'new'],
    'item set': ['FILE', '1', '--title', 'new'],
    'item move': ['FILE', '2', '--before', '1'],
    'item delete': ['FILE', '1'],
    'item indent': ['FILE', '2'],
    'item outdent': ['FILE', '1.1'],
}


class Options(changing.Case):
    def names(self, command):
        """The options of a command, and the commands below it, as the help shows them."""
        text = self.ok(*command.split(), '--help')
        options = re.findall(r'^  +(?:(-\w), )?(--[\w-]+)', text, re.M)
        below = text.partition('Commands:\n')[2].partition('\n\n')[0]
        return [x for pair in options for x in pair if x], re.findall(r'^  (\w+)', below, re.M)

    def all_commands(self, above=''):
        for name in self.names(above)[1]:
            command = (above + ' ' + name).strip()
            below = list(self.all_commands(command))
            yield from below or [command]

    def made(self, command):
        """A document for a command, and its arguments."""
        file = self.document([Item('a', kids=[Item('b')]), Item(rich('d'), checked=True)])
        if command == 'check':
            graph = Graph(self.bytes)
            graph.unlink('2')
            self.bytes = graph.data()
            with open(file, 'wb') as stream:
                stream.write(self.bytes)
            os.utime(file, ns=(OLD, OLD))
        for name, content in (('IN', 'x\n'), ('OPERATIONS', '{"op": "delete", "paths": ["1"]}\n')):
            (self.folder / name).write_text(content)
        places = {'FILE': file, 'IN': self.folder / 'IN', 'OPERATIONS': self.folder / 'OPERATIONS'}
        return file, [*command.split(), *[places.get(x, x) for x in CHANGES[command]]]

    def check_changed(self, file):
        with open(file, 'rb') as stream:
            self.assertNotEqual(stream.read(), self.bytes)

    def test_every_command_that_changes_documents_is_here(self):
        changing_ones = [x for x in self.all_commands() if '--dry-run' in self.names(x)[0]]
        self.assertEqual(sorted(changing_ones), sorted([*CHANGES, 'edit', 'new']))

    def test_dry_runs(self):
        for command in CHANGES:
            for option in ('-n', '--dry-run'):
                with self.subTest(command, option=option):
                    file, arguments = self.made(command)
                    result = driver.run(*arguments, option)
                    # what is at fault is left so
                    self.assertEqual((result.status, result.err), (1 if command == 'check' else 0, ''))
                    self.assertNotEqual(result.out, '')
                    self.untouched(file)

    def test_backups(self):
        for command in CHANGES:
            with self.subTest(command):
                file, arguments = self.made(command)
                self.check_backup(file, *arguments)
                self.check_changed(file)
        file = self.folder / 'new.tavlin'
        self.ok('new', '--backup', file)
        self.assertEqual([x for x in os.listdir(self.folder) if x.startswith('new')], ['new.tavlin'])

    def test_jobs(self):
        commands = [x for x in CHANGES if '--jobs' in self.names(x)[0]]
        self.assertGreaterEqual(len(commands), 5)
        for command in commands:
            for option in (['-j', '2'], ['-j2'], ['--jobs', '2'], ['--jobs=2']):
                with self.subTest(command, option=option):
                    file, arguments = self.made(command)
                    self.ok(*arguments, *option)
                    self.check_changed(file)
            for count in ('0', '-1', 'x', '1025'):
                file, arguments = self.made(command)
                self.fails(*arguments, '--jobs=' + count)
                self.untouched(file)

    def test_keywords_by_both_names(self):
        for command in ('add', 'remove', 'set'):
            for option in (['-k', 'c'], ['-kc'], ['-k=c'], ['--keyword', 'c'], ['--keyword=c']):
                file = self.document(properties={'keywords': [] if command == 'add' else ['b', 'c']})
                self.ok('keywords', command, *option, file)
                self.assertEqual(self.ok('keywords', 'list', '--jobs=1', file),
                                 '%s: %s\n' % (file, 'b' if command == 'remove' else 'c'))
                self.assertEqual(self.ok('keywords', 'count', '--jobs', '1', file),
                                 '1\t%s\n' % ('b' if command == 'remove' else 'c'))


if __name__ == '__main__':
    driver.main()
