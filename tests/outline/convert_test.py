"""tavlin convert."""
import os

import changing
import driver
from changing import rich
from driver import Item


def texts(document):
    return [(node, key) for node in document.items for key in ('title', 'note') if key in node.data]


class Convert(changing.Case):
    def test_both_ways(self):
        for option, makes_rich in (('--rich', True), ('--plain', False)):
            file = self.document()
            of_other_kind = [x for x in texts(self.before) if self.before.is_rich(*x) != makes_rich]
            says = '%s: %d text%s would become %s\n' % (
                file, len(of_other_kind), '' if len(of_other_kind) == 1 else 's', option[2:])
            self.check_dry_run(file, 'convert', option, file, says=says)
            self.assertEqual(self.ok('convert', option, file), '')
            after = self.written(file, items_but=('title', 'note'))
            self.assertEqual(after.outline(), self.before.outline())
            for old, new in zip(texts(self.before), texts(after)):
                self.assertEqual(after.is_rich(*new), makes_rich)
                if old not in of_other_kind:
                    self.assertEqual(self.before.content(old[0].data[old[1]]),
                                     after.content(new[0].data[new[1]]))
            self.document()
            self.check_backup(file, 'convert', option, file)

    def test_nothing_is_written_where_nothing_changes(self):
        for option, items in (('--plain', [Item('a', note='b')]), ('--rich', [Item(rich('a'), note=rich('b'))]),
                              ('--rich', [])):
            file = self.document(items)
            self.assertEqual(self.ok('convert', option, file), '')
            self.assertEqual(self.ok('convert', option, '--backup', '--dry-run', file), '')
            self.untouched(file)

    def test_there_and_back(self):
        wanted = ['$null', '$null$null', 'x$null', '\\$nul', '', 'é\U0001f600', 'a\nb']
        stored = [x.replace('$null', changing.NULL) for x in wanted]
        file = self.document([Item(x, note=x) for x in stored])
        self.assertEqual([x.title for x in self.before.items], wanted)
        self.ok('convert', '--rich', file)
        now = self.written(file, items_but=('title', 'note'))
        self.assertTrue(all(now.is_rich(*x) for x in texts(now)))
        self.assertEqual(now.outline(), self.before.outline())
        self.ok('keywords', 'add', '-k', 'again', file)     # is saved as it was read
        self.ok('item', 'set', file, '1', '--checked')
        self.ok('convert', '--plain', file)
        now = self.written(file, items_but=('title', 'note', 'checkStatus'), root_but=['documentProperties'])
        self.assertEqual([x[:3] for x in now.outline()], [x[:3] for x in self.before.outline()])

    def test_files_are_handled_each(self):
        file, gone = self.document(), self.folder / 'gone'
        self.assertEqual(self.fails('convert', '--rich', gone, file),
                         'tavlin: %s: No such file or directory\n' % gone)
        self.written(file, items_but=('title', 'note'))
        self.assertIn('standard input', self.fails('convert', '--rich', '-'))

    def test_usage(self):
        file = self.document()
        self.assertIn('--rich', self.fails('convert', file))
        self.fails('convert', '--rich', '--plain', file)
        self.fails('convert', '--rich')
        self.untouched(file)


if __name__ == '__main__':
    driver.main()
