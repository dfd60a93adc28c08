"""tavlin keywords: list, count and the edits."""
import json
import os
import re
import signal
import subprocess
import time

import changing
import documents
import driver
from driver import Item, run


class Keywords(changing.Case):
    def test_edits(self):
        for have, arguments, wanted in (
                (['a,b', 'c'], 'add -k d -k c -k a', ['a,b', 'c', 'd', 'a']),
                (['a'], 'add --keyword=b', ['a', 'b']),
                (['a', 'b', 'a'], 'remove -k a -k x', ['b']),
                (['a', 'b'], 'set -k z -k a', ['z', 'a']),
                (['a', 'b'], 'set', []),
                (['a', 'b', 'c'], 'rename --from b --to n', ['a', 'n', 'c']),
                (['a', 'b', 'c'], 'rename --from=a --to=c', ['b', 'c'])):
            arguments = arguments.split()
            file = self.document(properties={**changing.PROPERTIES, 'keywords': have})
            shown = '%s: %s\n' % (file, ','.join(x.replace(',', '\\,') for x in wanted))
            self.check_dry_run(file, 'keywords', *arguments, file, says=shown)
            self.assertEqual(self.ok('keywords', *arguments, file), '')
            after = self.written(file, root_but=['documentProperties'])
            self.assertEqual(after.properties, {**self.before.properties, 'keywords': wanted})
            self.document(properties={**changing.PROPERTIES, 'keywords': have})
            self.check_backup(file, 'keywords', *arguments, file)

    def test_they_are_cleaned(self):
        file = self.document()
        self.ok('keywords', 'set', '-k', 'x\ty\nz', '-k', 'é\u200b日本', '-k', '$null', '-k', '[a,b]', file)
        self.assertEqual(documents.Document(file).properties['keywords'],
                         ['x y z', 'é 日本', '$null', '[a,b]'])
        self.assertIn('no UTF-8', self.fails('keywords', 'add', '-k', os.fsdecode(b'\xff'), file))

    def test_nothing_is_written_where_nothing_changes(self):
        file = self.document()
        for arguments in ('add -k c', 'remove -k x', 'set -k a,b -k c', 'rename --from x --to y',
                          'rename --from c --to c'):
            self.assertEqual(self.ok('keywords', *arguments.split(), file), '')
            self.assertEqual(self.ok('keywords', *arguments.split(), '-n', '--backup', file), '')
            self.untouched(file)

    def test_properties_are_made(self):
        file = self.document(properties=None)
        self.ok('keywords', 'set', file)
        self.untouched(file)
        self.ok('keywords', 'add', '-k', 'x', file)
        self.assertEqual(self.written(file, root_but=['documentProperties']).properties,
                         {'keywords': ['x']})

    def test_what_is_no_list_is_refused(self):
        file = self.document(properties={'keywords': 'text'})
        self.assertEqual(self.fails('keywords', 'add', '-k', 'x', file),
                         'tavlin: %s: the keywords are a string and not a list\n' % file)
        self.untouched(file)

    def test_usage(self):
        file = self.document()
        for arguments in (['add', file], ['remove', file], ['rename', '--from', 'a', file],
                          ['rename', '--to', 'a', file], ['list'], ['count'], ['fly', file], []):
            self.assertNotEqual(self.fails('keywords', *arguments), '')
        self.assertIn('standard input', self.fails('keywords', 'add', '-k', 'x', '-'))
        self.untouched(file)

    def many(self):
        have = {'a.tavlin': ['x', 'a,b', 'x'], 'b.tavlin': ['x', '\uff5e', 'y'],
                'sub/c.tavlin': ['y', 'x', '\U0001f600', 'B'], 'd.tavlin': [], 'e.txt': ['no']}
        for name, keywords in have.items():
            self.save('many/' + name, [Item('i')], {'keywords': keywords})
        return self.folder / 'many'

    def test_list(self):
        folder = self.many()
        names = [str(folder / x) for x in ('b.tavlin', 'a.tavlin', 'd.tavlin')]
        self.assertEqual(self.ok('keywords', 'list', *names),
                         '%s: x,\uff5e,y\n%s: x,a\\,b,x\n%s: \n' % tuple(names))
        self.assertEqual([json.loads(x) for x in self.ok('keywords', 'list', '--json', *names).splitlines()],
                         [{'file': names[0], 'keywords': ['x', '\uff5e', 'y']},
                          {'file': names[1], 'keywords': ['x', 'a,b', 'x']},
                          {'file': names[2], 'keywords': []}])
        self.assertEqual(self.ok('keywords', 'list', '-j1', folder).count('\n'), 4)
        for color in ('auto', 'always', 'never'):
            self.assertEqual(self.ok('keywords', 'list', '--color', color, names[2]), names[2] + ': \n')

    def test_a_terminal_gets_nothing_raw(self):
        file = self.save('t.tavlin', [], {'keywords': ['\x1b[31m', 'a\nb', '\u202e']})
        for command in ('list', 'count'):
            status, out = driver.on_terminal('keywords', command, file)
            self.assertEqual(status, 0)
            self.assertNotIn(b'\x1b', out)
            self.assertNotIn('\u202e'.encode(), out)
            self.assertEqual(out.count(b'\n'), 1 if command == 'list' else 3)
        self.assertEqual(driver.on_terminal('keywords', 'set', '-n', '-k', 'x', '-k', 'y', file),
                         (0, ('%s: x,y\n' % file).encode()))

    def test_count(self):
        folder = self.many()
        wanted = '3\tx\n2\ty\n1\tB\n1\ta,b\n1\t\uff5e\n1\t\U0001f600\n'
        for jobs in ('-j1', '-j3'):
            self.assertEqual(self.ok('keywords', 'count', jobs, folder), wanted)
        self.assertEqual(self.ok('keywords', 'count', '--color=never', folder / 'd.tavlin'), '')
        gone = folder / 'gone.tavlin'
        result = run('keywords', 'count', folder, gone)
        self.assertEqual((result.status, result.out, result.err),
                         (2, wanted, 'tavlin: %s: No such file or directory\n' % gone))

    def test_each_file_is_handled(self):
        folder = self.many()
        gone, other = folder / 'gone.tavlin', folder / 'e.txt'
        self.assertEqual(self.fails('keywords', 'add', '-k', 'all', '-j2', gone, folder / 'sub', other),
                         'tavlin: %s: No such file or directory\n' % gone)
        self.assertEqual([documents.Document(folder / x).properties['keywords'][-1:]
                          for x in ('a.tavlin', 'sub/c.tavlin', 'e.txt')], [['x'], ['all'], ['all']])

    def test_a_link_stays(self):
        file = self.document()
        link = self.folder / 'link'
        link.symlink_to(file)
        self.ok('keywords', 'set', '-k', 'x', link)
        self.assertTrue(link.is_symlink())
        self.assertEqual(documents.Document(file).properties['keywords'], ['x'])

    def test_an_interrupt_leaves_whole_documents_and_says_how_many(self):
        count = 3000
        data = driver.content([Item('item %d' % i) for i in range(50)], {'keywords': ['old']})
        for jobs in ('1', '2'):
            folder = self.folder / jobs
            folder.mkdir()
            for i in range(count):
                (folder / ('%04d.tavlin' % i)).write_bytes(data)
            process = subprocess.Popen([driver.PROGRAM, 'keywords', 'add', '-k', 'new', '-j', jobs, folder],
                                       env=driver.ENVIRONMENT, stderr=subprocess.PIPE, text=True,
                                       start_new_session=True)
            while process.poll() is None and (folder / '0003.tavlin').read_bytes() == data:
                time.sleep(0.01)
            os.killpg(process.pid, signal.SIGINT)
            _, message = process.communicate(timeout=60)
            self.assertEqual(process.returncode, 2)
            found = re.fullmatch(r'tavlin: interrupted: (\d+) of %d documents were done\n' % count, message)
            self.assertTrue(found, message)
            states = [documents.Document(x).properties['keywords'] for x in sorted(folder.iterdir())]
            self.assertEqual(len(states), count)
            done = states.count(['old', 'new'])
            self.assertEqual(done + states.count(['old']), count)
            self.assertEqual(done, int(found[1]))
            self.assertTrue(3 <= done < count, done)


if __name__ == '__main__':
    driver.main()
