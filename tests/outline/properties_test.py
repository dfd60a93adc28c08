"""tavlin properties and tavlin new."""
import json
import os

import changing
import documents
import driver
from driver import run


class Properties(changing.Case):
    def test_changes(self):
        for arguments, wanted, said in (
                (['--set', 'title=New: "T" = x'], {'title': 'New: "T" = x'}, 'title: New: "T" = x'),
                (['--set', 'authors=A', '--set', 'authors=B, C'], {'authors': ['A', 'B, C']},
                 'authors: A,B\\, C'),
                (['--set=subject='], {'subject': ''}, 'subject: '),
                (['--set', 'comment=-x\ny'], {'comment': '-x\ny'}, 'comment: -x\\ny'),
                (['--set', 'keywords=a\tb', '--set', 'keywords=[c]'], {'keywords': ['a b', '[c]']},
                 'keywords: a b,[c]'),
                (['--unset', 'title'], {'title': None}, 'title would be removed')):
            file = self.document()
            self.check_dry_run(file, 'properties', file, *arguments, says='%s: %s\n' % (file, said))
            self.assertEqual(self.ok('properties', *arguments, file), '')
            after = self.written(file, root_but=['documentProperties'])
            self.assertEqual(after.properties, {k: v for k, v in {**self.before.properties, **wanted}.items()
                                                if v is not None})
            self.document()
            self.check_backup(file, 'properties', file, *arguments)

    def test_several_at_once(self):
        file = self.document()
        out = self.ok('properties', file, '--unset', 'comment', '--set', 'organizations=O', '--unset',
                      'copyright', '--unset=authors', '--json')
        wanted = {'title': 'Doc: "one"', 'organizations': ['O'], 'keywords': ['a,b', 'c']}
        self.assertEqual(json.loads(out), {'file': file, 'properties': wanted})
        self.assertEqual(documents.Document(file).properties, wanted)

    def test_a_dry_run_in_json_is_json_alone(self):
        file = self.document()
        out = self.ok('properties', file, '--set', 'title=New', '--unset', 'authors', '-n', '--json')
        self.assertEqual(json.loads(out), {'file': file, 'properties': {
            'title': 'New', 'keywords': ['a,b', 'c'], 'comment': 'first\nsecond'}})
        self.untouched(file)

    def test_nothing_is_written_where_nothing_changes(self):
        file = self.document()
        for arguments in (['--set', 'title=Doc: "one"'], ['--set=authors=Ann', '--set=authors=Ben, Jr.'],
                          ['--unset', 'subject'], []):
            self.ok('properties', file, *arguments)
            self.ok('properties', file, *arguments, '--backup', '--dry-run')
            self.untouched(file)

    def test_what_is_refused(self):
        file = self.document()
        for arguments, why in ((['--set', 'nonsense=x'], '"nonsense" is no property; there are title'),
                               (['--set', 'title'], '"title" has no "="'),
                               (['--unset', 'nonsense'], '"nonsense" is no property'),
                               (['--set', 'title=a', '--set', 'title=b'], 'title is no list'),
                               (['--set', 'title=a', '--unset', 'title'], 'cannot be set and unset'),
                               (['--set', os.fsdecode(b'title=\xff')], 'is no UTF-8 text'),
                               (['--set', 'title=ok', '--set', 'bogus=1'], 'bogus')):
            self.assertTrue(self.fails('properties', file, *arguments, says=why).startswith(
                'tavlin: %s: ' % file))
            self.untouched(file)
        self.assertIn('standard input', self.fails('properties', '-', '--set', 'title=x'))
        self.fails('properties')
        file = self.document(properties=None, documentProperties=5)
        self.assertEqual(self.fails('properties', file, '--set', 'title=x'),
                         'tavlin: %s: the document properties are an integer and not a dictionary\n' % file)
        self.untouched(file)

    def test_printing(self):
        file = self.document()
        for out in (self.ok('properties', file), self.ok('properties', '--color=never', file)):
            self.assertEqual([x.split(':', 1)[0] for x in out.splitlines()],
                             ['title', 'authors', 'keywords', 'comment'])
            self.assertIn('first\\nsecond', out)
        with open(file, 'rb') as stream:
            self.assertEqual(self.ok('properties', '-', stdin=stream.read()), out)
        self.assertEqual(json.loads(self.ok('properties', '--json', file)),
                         {'file': file, 'properties': self.before.properties})
        file = self.document(properties={'title': '\x1b[31m'})
        self.assertNotIn(b'\x1b', driver.on_terminal('properties', file)[1])
        self.assertNotIn(b'\x1b', driver.on_terminal('properties', file, '-n', '--set', 'title=\x1b')[1])


class New(driver.Case):
    def test_an_empty_document(self):
        file = str(self.folder / 'new.tavlin')
        self.assertEqual(self.ok('new', file), '')
        document = documents.Document(file)
        self.assertEqual((document.items, document.properties, document.controller),
                         ([], {}, 'OLTreeUndoController'))
        self.assertEqual(self.ok('item', 'add', file, '--title', 'first'), '1\n')

    def test_its_title(self):
        for i, title in enumerate(('My T', '', '$null')):
            file = self.folder / ('%d.tavlin' % i)
            self.ok('new', '--title=' + title, file)
            self.assertEqual(documents.Document(file).properties, {'title': title})

    def test_a_dry_run(self):
        file = self.folder / 'new.tavlin'
        self.assertEqual(self.ok('new', '--dry-run', file), '%s: a new document would be made\n' % file)
        self.assertFalse(file.exists())

    def test_a_dry_run_fails_where_there_would_be_no_document(self):
        (self.folder / 'file').write_text('x')
        os.symlink('no/x', self.folder / 'link')
        os.symlink('new', self.folder / 'ready')
        for name, why in (('no/x', 'No such file or directory'), ('file/x', 'Not a directory'), ('', ''),
                          ('link', 'No such file or directory'), ('x' * 300, 'File name too long'), ('x/', '')):
            for option in ([], ['--dry-run']):
                self.fails('new', *option, '--', name, cwd=self.folder, says='tavlin: %s: %s' % (name, why))
        if os.geteuid():
            (self.folder / 'closed').mkdir(0o555)
            self.fails('new', '-n', 'closed/x', cwd=self.folder, says='Permission denied')
            (self.folder / 'closed').rmdir()
        self.assertIn('would be made', self.ok('new', '-n', 'ready', cwd=self.folder))
        self.assertEqual(sorted(os.listdir(self.folder)), ['file', 'link', 'ready'])

    def test_standard_output_is_no_document(self):
        for option in ([], ['--dry-run']):
            self.assertEqual(self.fails('new', '-', *option, cwd=self.folder),
                             'tavlin: -: a document needs a file; standard output is none\n')
        self.assertEqual(os.listdir(self.folder), [])

    def test_nothing_is_replaced(self):
        file = self.folder / 'there'
        file.write_text('text')
        for option in ('--dry-run', '--backup', '--title=x'):
            self.assertEqual(self.fails('new', option, file),
                             'tavlin: %s: the file is there already\n' % file)
        self.assertEqual(file.read_text(), 'text')
        self.assertEqual(os.listdir(self.folder), ['there'])

    def test_where_it_cannot_be(self):
        file = self.folder / 'no' / 'x.tavlin'
        self.assertEqual(self.fails('new', file), 'tavlin: %s: No such file or directory\n' % file)
        self.fails('new')
        self.assertIn('no UTF-8', run('new', '--title', os.fsdecode(b'\xff'), self.folder / 'x').err)
        self.assertEqual(os.listdir(self.folder), [])


if __name__ == '__main__':
    driver.main()
