"""Help, version, unknown commands and options, where options may stand, ends of the program."""
import os
import resource
import subprocess

import driver
from driver import Item, run


class Arguments(driver.Case):
    def setUp(self):
        super().setUp()
        self.file = self.save('a.tavlin', [Item('one', kids=[Item('two')])])

    def test_version_and_help(self):
        self.assertEqual(self.ok('--version'), 'tavlin 0.2.0\n')
        for command in ('show', 'info', 'find', 'completions'):
            self.assertIn('  ' + command, self.ok('--help'))
            self.assertEqual(self.ok('help', command), self.ok(command, '--help'))
            self.assertIn('Usage: tavlin ' + command, self.ok('help', command))
        self.assertEqual(self.ok('help'), self.ok('--help'))

    def test_no_command(self):
        result = run()
        self.assertEqual((result.status, result.out), (2, ''))
        self.assertEqual(result.err, self.ok('--help'))

    def test_unknown_names_are_told_with_the_nearest(self):
        for arguments, message in (
                (('shwo', self.file), 'unknown command shwo; did you mean show?'),
                (('show', '--dept=1', self.file), 'unknown option --dept; did you mean --depth?'),
                (('show', self.file, '--no-note'), 'unknown option --no-note; did you mean --no-notes?'),
                (('find', '--chekced', 'x', self.file), 'unknown option --chekced; did you mean --checked?'),
                (('help', 'shoe'), 'unknown command shoe; did you mean show?')):
            self.assertEqual(self.fails(*arguments), 'tavlin: ' + message + '\n')

    def test_bad_values(self):
        for arguments in (('show',), ('show', '--depth', 'x', self.file), ('show', '--depth=0', self.file),
                          ('show', '--checks=sometimes', self.file), ('show', '--depth'),
                          ('find', '--in=nowhere', 'x', self.file), ('find', 'x'),
                          ('info', '--json=maybe', self.file), ('info', '-j', '0', self.file),
                          ('find', '--checked', '--unchecked', 'x', self.file)):
            self.assertEqual(self.fails(*arguments).count('\n'), 1, arguments)

    def test_what_takes_no_value_is_told(self):
        for option in ('--no-notes=1', '--paths=', '--expanded=false'):
            self.assertEqual(self.fails('show', option, self.file),
                             'tavlin: this option takes no value: %s\n' % option)
        for command, option in (('find', '-i=1'), ('find', '-lc=x'), ('info', '--json=yes')):
            self.assertEqual(self.fails(command, 'x', self.file, option),
                             'tavlin: this option takes no value: %s\n' % option)
        for option in ('-n=1', '-n=', '--dry-run=true', '--backup=x'):
            self.assertEqual(self.fails('item', 'delete', self.file, '1', option),
                             'tavlin: this option takes no value: %s\n' % option)
        self.assertEqual(self.ok('keywords', 'set', '-n', '-k=a=b', self.file), self.file + ': a=b\n')

    def test_options_stand_anywhere(self):
        flat = self.ok('show', '--depth', '1', self.file)
        self.assertEqual(flat, 'one\n')
        for arguments in (('show', '--depth=1', self.file), ('show', self.file, '--depth=1'),
                          ('show', self.file, '--depth', '1'), ('--depth', '1', 'show', self.file),
                          ('--depth=1', 'show', self.file), ('show', '--depth=1', '--', self.file)):
            self.assertEqual(self.ok(*arguments), flat, arguments)

    def test_a_value_that_may_be_left_out_needs_its_sign(self):
        self.assertEqual(self.ok('show', '--numbers', self.file), '1 one\n  1.1 two\n')
        self.assertEqual(self.ok('show', '--numbers=harvard', self.file), 'I. one\n  A. two\n')

    def test_two_hyphens_end_the_options(self):
        self.save('-x.tavlin', [Item('hyphen')])
        self.assertEqual(self.ok('show', '--', '-x.tavlin', cwd=self.folder), 'hyphen\n')
        self.assertEqual(self.ok('find', '--', '-', self.save('b.tavlin', [Item('a-b')])),
                         str(self.folder / 'b.tavlin') + ':1:a-b\n')

    def test_names_of_commands_are_no_commands_as_arguments(self):
        self.save('info', [Item('a file named info')])
        self.assertEqual(self.ok('show', 'info', cwd=self.folder), 'a file named info\n')
        self.assertEqual(run('find', 'show', 'info', cwd=self.folder).status, 1)

    def test_standard_input(self):
        with open(self.file, 'rb') as file:
            data = file.read()
        self.assertEqual(self.ok('show', '-', stdin=data), self.ok('show', self.file))

    def test_a_closed_pipe_ends_quietly(self):
        big = self.save('big.tavlin', [Item('item %d with some words' % i) for i in range(9000)])
        for arguments in (('show', big), ('find', 'item', big), ('info', big, big)):
            reading, writing = os.pipe()
            os.close(reading)
            done = subprocess.run([driver.PROGRAM, *arguments], stdout=writing,
                                  stderr=subprocess.PIPE, env=driver.ENVIRONMENT)
            os.close(writing)
            self.assertEqual((done.returncode, done.stderr), (141, b''), arguments)

    def test_a_full_device_and_a_closed_output_are_failures(self):
        with open('/dev/full', 'wb') as full:
            done = subprocess.run([driver.PROGRAM, 'show', self.file], stdout=full,
                                  stderr=subprocess.PIPE, env=driver.ENVIRONMENT)
        self.assertEqual(done.returncode, 2)
        self.assertEqual(done.stderr, b'tavlin: standard output: No space left on device\n')
        done = subprocess.run([driver.PROGRAM, 'show', self.file], stderr=subprocess.PIPE,
                              env=driver.ENVIRONMENT, preexec_fn=lambda: os.close(1))
        self.assertEqual(done.returncode, 2, done.stderr)

    def test_memory_that_is_not_there_is_a_message(self):
        big = self.save('big.tavlin', [Item('%05d' % i + 'x' * 3000) for i in range(20000)])
        if any('SAN_OPTIONS' in key for key in os.environ) or b'asan' in driver.PROGRAM.encode():
            self.skipTest('sanitizers need address space')
        limit = 60 << 20
        done = subprocess.run([driver.PROGRAM, 'show', big], capture_output=True,
                              env=driver.ENVIRONMENT,
                              preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
        self.assertEqual(done.returncode, 2)
        self.assertTrue(done.stderr.startswith(b'tavlin: '), done.stderr)


if __name__ == '__main__':
    driver.main()
