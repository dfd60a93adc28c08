"""tavlin item: what each edit does, refuses and leaves alone."""
import os
import plistlib
import subprocess
import time

import changing
import documents
import driver
from changing import rich
from driver import Item, run

CONTROLLERS = ['OLTreeUndoController', 'OLTreeRuntimeAttributesController', 'OLTreeController']


def garden():
    return [Item('a', note='n', kids=[Item('b', kids=[Item('c', weight=1.5)]), Item('d')], expanded=True),
            Item(rich('e'), checked=True, label=3)]


class Items(changing.Case):
    def edit(self, *arguments, out='', wanted, items_but=()):
        """Does an edit, also as a dry run and with a backup; the titles with their levels are then
        those wanted, and every item that was there has all it had."""
        file = self.document(garden())
        name, rest = arguments[0], arguments[1:]
        dry = self.ok('item', name, file, *rest, '--dry-run')
        self.assertEqual(dry, out or ' '.join([name, *[x for x in rest if x[0].isdigit()]]) + '\n')
        self.untouched(file)
        self.assertEqual(self.ok('item', name, file, *rest), out)
        after = documents.Document(file)
        self.assertEqual(' '.join('%d%s' % (level, title) for level, title, _, _ in after.outline()), wanted)
        old = {node.title: node for node in self.before.items}
        pairs = [(old[node.title], node) for node in after.items if node.title in old]
        self.written(file, pairs, items_but)
        self.document(garden())
        self.check_backup(file, 'item', name, file, *rest)
        return after

    def test_add(self):
        self.edit('add', '--title', 'x', out='3\n', wanted='0a 1b 2c 1d 0e 0x')
        self.edit('add', '--title=x', '--under', '1.1', out='1.1.2\n', wanted='0a 1b 2c 2x 1d 0e')
        self.edit('add', '--title', 'x', '--before=1.2', out='1.2\n', wanted='0a 1b 2c 1x 1d 0e')
        after = self.edit('add', '--title', 'x', '--after', '1', '--note=two\nlines', '--checked', out='2\n',
                          wanted='0a 1b 2c 1d 0x 0e')
        self.assertEqual((after.items[4].note, after.items[4].checked), ('two\nlines', True))

    def test_texts_of_all_kinds(self):
        for text in ('$null', '\\$null', '', '-x', '[a,b]', '"q"', "it's", 'é\U0001f600', 'a\nb', '\x1b[31m'):
            file = self.document([])
            self.ok('item', 'add', file, '--title=' + text, '--note=' + text)
            node = documents.Document(file).items[0]
            self.assertEqual((node.title, node.note), (text, text or None))
            self.ok('item', 'set', file, '1', '--title=x' + text)
            self.assertEqual(documents.Document(file).items[0].title, 'x' + text)

    def test_set(self):
        after = self.edit('set', '1.2', '--title', 'x', wanted='0a 1b 2c 1x 0e')
        after = self.edit('set', '1.2', '--note', 'x', '--checked', wanted='0a 1b 2c 1d 0e',
                          items_but=('note', 'checkStatus'))
        self.assertEqual((after.items[3].note, after.items[3].checked), ('x', True))
        after = self.edit('set', '2', '--unchecked', wanted='0a 1b 2c 1d 0e', items_but=['checkStatus'])
        self.assertFalse(after.items[4].checked)
        after = self.edit('set', '1', '--note=', wanted='0a 1b 2c 1d 0e', items_but=['note'])
        self.assertNotIn('note', after.items[0].data)

    def test_rich_text_stays_rich(self):
        for text in ('else', '$null', 'ee'):
            file = self.document(garden())
            self.ok('item', 'set', file, '2', '--title', text)
            node = documents.Document(file).items[4]
            self.assertEqual(node.title, text)
            self.assertTrue(documents.Document(file).is_rich(node, 'title'))
            self.assertEqual(self.ok('show', '--item', '2', '--checks=never', file), text + '\n')

    def test_move(self):
        self.edit('move', '1.1', '--after', '2', out='3\n', wanted='0a 1d 0e 0b 1c')
        self.edit('move', '1.1', '--under=2', out='2.1\n', wanted='0a 1d 0e 1b 2c')
        self.edit('move', '2', '1.1', '--before', '1.2', out='1.1\n1.2\n', wanted='0a 1e 1b 2c 1d')
        self.edit('move', '1.1', '1.1.1', '2', '--after', '1.2', out='1.2\n1.3\n', wanted='0a 1d 1b 2c 1e')

    def test_delete_indent_outdent(self):
        self.edit('delete', '1.1', wanted='0a 1d 0e')
        self.edit('delete', '2', '1.1.1', '1.1', wanted='0a 1d')
        self.edit('indent', '2', wanted='0a 1b 2c 1d 1e')
        self.edit('indent', '2', '1.2', wanted='0a 1b 2c 2d 1e')
        self.edit('outdent', '1.1.1', wanted='0a 1b 1c 1d 0e')
        self.edit('outdent', '1.1', '1.2', wanted='0a 0b 1c 0d 0e')

    def test_nothing_is_written_where_nothing_changes(self):
        file = self.document(garden())
        for arguments, out in ((['set', '1', '--title', 'a', '--note', 'n', '--unchecked'], ''),
                               (['set', '2', '--checked'], ''), (['set', '2', '--note='], ''),
                               (['move', '1', '--before', '1'], '1\n'), (['move', '1.1', '--after', '1.1'], '1.1\n'),
                               (['move', '1.2', '--under', '1'], '1.2\n'),
                               (['move', '1.2', '--after', '1.1'], '1.2\n'),
                               (['move', '1.1', '1.2', '--after', '1.1'], '1.1\n1.2\n')):
            for options in ([], ['--backup'], ['--dry-run']):
                self.assertEqual(self.ok('item', arguments[0], file, *arguments[1:], *options), out)
                self.untouched(file)

    def test_what_is_refused(self):
        file = self.document(garden())
        for arguments, why in (
                ('move 1 --under 1', 'item 1 cannot go below itself'),
                ('move 1 --before 1.1.1', 'item 1 cannot go below itself'),
                ('move 2 9 --under 1', 'there is no item 9'), ('delete 1 7', 'there is no item 7'),
                ('delete 0', '"0" is no path of an item'), ('set 1. --title x', '"1." is no path'),
                ('indent 2 1', 'item 1 is the first of its siblings'), ('indent 1.1', 'item 1.1 is the first'),
                ('outdent 1.1 2', 'item 2 is at the top already'),
                ('add --title x --under 1.3', 'there is no item 1.3'), ('set 1', 'set needs something to set'),
                ('move 1', 'move needs a place')):
            name, *rest = arguments.split()
            for dry in ([], ['--dry-run']):
                self.assertTrue(self.fails('item', name, file, *rest, *dry, says=why).startswith(
                    'tavlin: %s: ' % file))
            self.untouched(file)
        self.assertIn('no UTF-8', self.fails('item', 'add', file, '--title', os.fsdecode(b'\xff')))
        self.untouched(file)

    def test_an_item_that_stands_twice_among_siblings_is_not_taken(self):
        twice = Item('twice', kids=[Item('below')])
        file = self.save('d.tavlin', [Item('a', kids=[twice, Item('between'), twice]), Item('e')])
        with open(file, 'rb') as stream:
            before = stream.read()
        for arguments in (['delete', '1.1'], ['delete', '1.3'], ['move', '1.1', '--under', '2'],
                          ['move', '2', '--before', '1.3'], ['indent', '1.3'], ['outdent', '1.1'],
                          ['set', '1.1', '--title', 'x'], ['delete', '1.1.1'],
                          ['add', '--under', '1.3', '--title', 'x']):
            path = next(x for x in arguments if x.startswith('1.'))
            self.assertEqual(self.fails('item', arguments[0], file, *arguments[1:]),
                             'tavlin: %s: item %s cannot be edited, since it or an item above it is listed twice; '
                             'tavlin check --repair mends that\n' % (file, path))
            with open(file, 'rb') as stream:
                self.assertEqual(stream.read(), before)
        self.ok('item', 'delete', file, '1.2')
        self.ok('check', '--repair', file)
        self.ok('item', 'delete', file, '1.1')
        self.assertEqual([(x.path, x.title) for x in documents.Document(file).items],
                         [('1', 'a'), ('1.1', 'twice'), ('1.1.1', 'below'), ('2', 'e')])

    def test_usage(self):
        file = self.document(garden())
        for arguments in (['add', file], ['add', file, '--title', 'x', '--under', '1', '--after', '1'],
                          ['add', file, '1', '--title', 'x'], ['set', file], ['set', file, '1', '2', '--title', 'x'],
                          ['set', file, '1', '--checked', '--unchecked'], ['delete', file], ['indent', file],
                          ['outdent', file], ['move', file, '--under', '1'], ['fly', file, '1'], [],
                          ['delete', file, '1', '--titel', 'x']):
            self.assertNotEqual(self.fails('item', *arguments), '')
        self.assertIn('standard input', self.fails('item', 'delete', '-', '1'))
        self.untouched(file)

    def test_another_controller_stays(self):
        for controller in CONTROLLERS:
            file = self.document(garden())
            with open(file, 'rb') as stream:
                data = stream.read()
            with open(file, 'wb') as stream:
                stream.write(self.with_controller(data, controller))
            self.assertEqual(documents.Document(file).controller, controller)
            self.ok('item', 'indent', file, '2')
            self.assertEqual(documents.Document(file).controller, controller)
            self.assertEqual([x.path for x in documents.Document(file).items],
                             ['1', '1.1', '1.1.1', '1.2', '1.3'])

    @staticmethod
    def with_controller(data, controller):
        archive = plistlib.loads(data)
        for record in archive['$objects']:
            if isinstance(record, dict) and record.get('$classname') in CONTROLLERS:
                record['$classname'] = controller
                record['$classes'] = CONTROLLERS[CONTROLLERS.index(controller):] + ['NSObject']
        return plistlib.dumps(archive, fmt=plistlib.FMT_BINARY)

    def test_another_program_that_saves_meanwhile_is_not_overwritten(self):
        for options, backup in ([], None), (['--backup'], None), (['--backup'], b'an older one'):
            # it has read the document, and waits for operations
            file = self.document(garden())
            process = subprocess.Popen([driver.PROGRAM, 'apply', file, *options], env=driver.ENVIRONMENT,
                                       stdin=subprocess.PIPE, stderr=subprocess.PIPE)
            time.sleep(1)
            self.ok('item', 'add', file, '--title', 'meanwhile')
            with open(file, 'rb') as stream:
                wanted = {'doc.tavlin': stream.read()}
            if backup:
                wanted['doc.tavlin~'] = backup
                with open(file + '~', 'wb') as stream:
                    stream.write(backup)
            _, err = process.communicate(b'{"op": "delete", "paths": ["1"]}\n', timeout=60)
            self.assertEqual(process.returncode, 2)
            self.assertIn(b'another program has changed it meanwhile', err)
            self.assertEqual({x.name: x.read_bytes() for x in (self.folder / 'd').iterdir()}, wanted)

    def test_without_a_place_for_the_backup_nothing_is_done(self):
        file = self.document(garden())
        os.mkdir(file + '~')
        self.assertEqual(self.fails('item', 'delete', file, '1', '--backup'),
                         'tavlin: %s: the backup %s~: Is a directory\n' % (file, file))
        os.rmdir(file + '~')
        self.untouched(file)

    def test_a_thousand_levels(self):
        item = Item('end')
        for _ in range(1000):
            item = Item('x', kids=[item])
        file = self.document([item])
        path = '.'.join(['1'] * 1001)
        self.assertEqual(self.ok('item', 'add', file, '--under', path, '--title', 'y'), path + '.1\n')
        self.assertEqual(run('item', 'delete', file, path + '.1.1').status, 2)


if __name__ == '__main__':
    driver.main()
