"""What must not happen to documents and terminals: other files changed, work done unsaid, text obeyed."""
import json
import os
import pathlib
import signal
import subprocess
import time

import driver
from driver import Item, run

OLD = 1234567890 * 10 ** 9


class Safety(driver.Case):
    def untouched(self, path, content):
        self.assertEqual(pathlib.Path(path).read_bytes(), content)

    def test_names_in_brackets_are_names(self):
        plain, odd = self.save('x', [Item('plain')]), self.save('[x]', [Item('odd')])
        before = pathlib.Path(plain).read_bytes()
        self.assertEqual(self.ok('show', '[x]', cwd=self.folder), 'odd\n')
        self.ok('keywords', 'add', '-k', '[a,b]', '[x]', cwd=self.folder)
        self.assertEqual(self.ok('keywords', 'list', '[x]', cwd=self.folder), '[x]: [a\\,b]\n')
        self.ok('convert', '--rich', '[x]', cwd=self.folder)
        self.untouched(plain, before)
        self.assertEqual(self.ok('find', '[d]', odd), odd + ':1:odd\n')
        for text in ('[]', '[[a]]', '[1,2]'):
            self.assertEqual(self.ok('item', 'set', '[x]', '1', '--title', text, cwd=self.folder), '')
            self.assertEqual(self.ok('show', odd), text + '\n')
        self.fails('item', 'delete', odd, '[1,2]')

    def test_a_short_option_takes_its_value_behind_the_sign(self):
        file = self.save('d.tavlin', [])
        self.ok('keywords', 'add', '-k=word', '-j=1', file)
        self.assertEqual(self.ok('keywords', 'list', file), file + ': word\n')

    def test_one_document_by_two_names_is_changed_once(self):
        file = self.save('d.tavlin', [], {'keywords': []})
        os.symlink('d.tavlin', self.folder / 'link.tavlin')
        for _ in range(5):
            self.ok('keywords', 'set', '-j4', file, file, self.folder, self.folder / 'link.tavlin')
            self.ok('keywords', 'add', '-k', 'k', '-j4', file, file, self.folder)
        self.assertEqual(self.ok('keywords', 'count', file, self.folder), '1\tk\n')

    def test_operations_that_come_to_nothing_write_nothing(self):
        file = self.save('d.tavlin', [Item('A')])
        self.ok('item', 'set', file, '1', '--title', 'B')  # in the form of this program
        os.utime(file, ns=(OLD, OLD))
        self.ok('apply', '--backup', file, stdin=b'{"op":"set","paths":["1"],"title":"tmp"}\n'
                                                 b'{"op":"set","paths":["1"],"title":"B"}\n')
        self.assertEqual(os.stat(file).st_mtime_ns, OLD)
        self.assertFalse(os.path.exists(file + '~'))

    def test_operations_come_through_a_pipe(self):
        file = self.save('d.tavlin', [Item('A')])
        script = 'printf \'{"op":"delete","paths":["1"]}\' | "$0" apply "$1" /dev/stdin'
        subprocess.run(['/bin/sh', '-c', script, driver.PROGRAM, file], check=True, env=driver.ENVIRONMENT)
        self.assertEqual(self.ok('show', file), '')

    def test_a_backup_replaces_a_link_and_not_what_it_leads_to(self):
        file = self.save('d.tavlin', [Item('A')])
        content = pathlib.Path(file).read_bytes()
        os.chmod(file, 0o600)
        other = self.folder / 'other'
        other.write_text('mine')
        os.symlink('other', file + '~')
        self.assertEqual(self.ok('item', 'add', '--backup', file, '--title', 'B'), '2\n')
        self.assertEqual(other.read_text(), 'mine')
        self.assertFalse(os.path.islink(file + '~'))
        self.untouched(file + '~', content)
        self.assertEqual(os.stat(file + '~').st_mode & 0o777, 0o600)
        self.assertEqual(sorted(os.listdir(self.folder)), ['d.tavlin', 'd.tavlin~', 'other'])

    def test_an_interrupt_leaves_the_old_document_or_the_new_one_with_its_backup(self):
        old = driver.content([Item('item %d' % i, note='x' * 200) for i in range(20000)])
        for i in range(15):
            folder = self.folder / str(i)
            folder.mkdir()
            file = folder / 'd.tavlin'
            file.write_bytes(old)
            process = subprocess.Popen([driver.PROGRAM, 'item', 'delete', '--backup', file, '1'],
                                       env=driver.ENVIRONMENT)
            # while the backup is written, and a little later each time
            while process.poll() is None and len(os.listdir(folder)) == 1:
                pass
            time.sleep(i * 0.002)
            process.send_signal(signal.SIGINT)
            process.wait(timeout=60)
            left = {x.name: x.read_bytes() == old for x in folder.iterdir()}
            self.assertIn(left, ({'d.tavlin': True}, {'d.tavlin': False, 'd.tavlin~': True}))

    def test_a_document_is_not_exported_onto_itself(self):
        file = self.save('d.tavlin', [Item('A')])
        content = pathlib.Path(file).read_bytes()
        os.symlink('d.tavlin', self.folder / 'link')
        for out in (file, self.folder / 'link'):
            self.assertIn(str(out), self.fails('export', '--to=text', '-o', out, file))
        self.untouched(file, content)

    def test_a_terminal_obeys_no_exported_text(self):
        file = self.save('d.tavlin', [Item('e\x1b[31m\u202e\x9bm', note='n\x07')])
        for form in ('text', 'markdown', 'opml', 'html', 'json'):
            status, shown = driver.on_terminal('export', '--to=' + form, file)
            self.assertEqual(status, 0)
            for obeyed in ('\x1b', '\u202e', '\x9b', '\x07'):
                self.assertNotIn(obeyed, shown.decode(), form)
        self.assertEqual(driver.on_terminal('export', '--to=text', file)[1].decode(),
                         'e\\x1b[31m\\u{202e}\\u{9b}m\n\t> n\\x07\n')

    def test_documents_are_not_imported_from_and_to_standard_streams(self):
        outline = self.folder / 'a.txt'
        outline.write_text('x\n')
        self.fails('import', '-o', '-', outline, cwd=self.folder)
        self.fails('import', '--into', '-', outline, cwd=self.folder)
        self.assertEqual(os.listdir(self.folder), ['a.txt'])

    def test_json_says_each_value_once(self):
        for content in ({'items': [{'title': 'a', 'data': {'title': 'b'}}]},
                        {'items': [{'checked': True, 'data': {'checkStatus': False}}]},
                        {'items': [], 'properties': {}, 'settings': {'documentProperties': {}}}):
            path = self.folder / 'a.json'
            path.write_text(json.dumps({'tavlin': 1, **content}))
            self.assertIn('twice', self.fails('import', '-o', self.folder / 'new.tavlin', path))

    def test_what_is_wrong_is_told_although_it_cannot_be_mended(self):
        font = driver.archives.Instance('NSFont', {'NSName': driver.archives.Value('Helvetica'), 'NSSize': 13.0})
        short = driver.archives.attributed('longer than its runs', (2, driver.archives.dictionary({'NSFont': font})),
                                           (3, driver.archives.dictionary({})))
        file = self.save('d.tavlin', [Item(short)])
        with open(file, 'rb') as document:
            result = run('check', '--repair', '-', stdin=document.read())
        self.assertIn('[runs]', result.out)
        self.assertEqual(result.status, 2, result)


if __name__ == '__main__':
    driver.main()
