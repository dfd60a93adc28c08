"""What tests of commands that change documents share."""
import os

import documents
import driver
from driver import Item, archives

OLD = 1234567890 * 10**9
NULL = '\\$null'     # "$null" as archives have it
PROPERTIES = {'title': 'Doc: "one"', 'authors': ['Ann', 'Ben, Jr.'], 'keywords': ['a,b', 'c'],
              'comment': 'first\nsecond'}


def rich(text, **attributes):
    return archives.attributed(text, archives.dictionary(attributes or {'NSLink': 'http://e.org/'}))


class Case(driver.Case):
    """A test with a document that looks old, so that a write shows."""

    def document(self, items=None, properties=PROPERTIES, name='d/doc.tavlin', **settings):
        if items is None:
            items = [Item('a', note='n', kids=[Item(rich('b'), checked=True, kids=[Item('c', weight=1.5)]),
                                               Item(NULL)], expanded=True),
                     Item('d', checked=False, label=3)]
        settings.setdefault('window', '{{0, 0}, {640, 480}}')
        file = self.save(name, items, properties, **settings)
        os.chmod(file, 0o640)
        os.utime(file, ns=(OLD, OLD))
        self.before = documents.Document(file)
        with open(file, 'rb') as stream:
            self.bytes = stream.read()
        return file

    def untouched(self, file):
        with open(file, 'rb') as stream:
            self.assertEqual(stream.read(), self.bytes)
        self.assertEqual(os.stat(file).st_mtime_ns, OLD, 'the file was written')
        self.assertEqual(os.listdir(os.path.dirname(file)), [os.path.basename(file)])

    def written(self, file, pairs=None, items_but=(), root_but=()):
        """The document of a file that was written and has all that it had, but for those keys."""
        after = documents.Document(file)
        self.assertNotEqual(os.stat(file).st_mtime_ns, OLD)
        self.assertEqual(os.stat(file).st_mode & 0o777, 0o640)
        if pairs is None:
            self.assertEqual([x.path for x in self.before.items], [x.path for x in after.items])
            pairs = zip(self.before.items, after.items)
        self.assertEqual(
            documents.differences(self.before, after, pairs, items_but, root_but), [])
        return after

    def check_dry_run(self, file, *arguments, says=None):
        """A dry run says something in a line each, and touches nothing."""
        out = self.ok(*arguments, '--dry-run')
        self.assertNotEqual(out, '')
        if says is not None:
            self.assertEqual(out, says)
        self.untouched(file)

    def check_backup(self, file, *arguments):
        self.ok(*arguments, '--backup')
        with open(file + '~', 'rb') as stream:
            self.assertEqual(stream.read(), self.bytes)
        self.assertEqual(os.stat(file + '~').st_mtime_ns, OLD)
        os.unlink(file + '~')
        self.assertNotEqual(os.stat(file).st_mtime_ns, OLD)
