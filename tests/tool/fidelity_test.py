"""What the program does not change comes back as it was.

Every kind of value is put into every place of a document that can hold one.  After a write the
graph of objects is the same, but for the keywords and the repairs; a second write gives the same
bytes; the file is hardly larger than the smallest one possible.

    fidelity_test.py TAVLIN-KEYWORDS
"""
import datetime
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

import archives
import writing
from archives import (Archive, Difference, Instance, MUTABLE_ARRAY, MUTABLE_DICTIONARY, NIL, Value,
                      array, as_xml, attributed, compared, dictionary, document, mutable_data,
                      mutable_string, node, property_list, ref)
from kinds import KINDS, font, placed, properties

TOOL = sys.argv[1]
KEYWORDS = ['n', 'größe, $null']


class Comparing(unittest.TestCase):
    """The comparison sees what it is for."""

    def test_differences(self):
        shared, style = mutable_string('x'), {'a': 1, 'b': archives.Single(0.5)}
        gone = Instance('ZZGone')

        def made(value, **more):
            return document(node({'documentProperties': properties(['k']), 'value': value}), **more)

        def thing(fields=None, chain=('ZZ', 'NSObject'), **more):
            return Instance(chain, fields or style, **more)
        pairs = {
            'width of a real': (thing(), thing({'a': 1, 'b': 0.5})),
            'width of an integer': (thing(), thing({**style, 'a': archives.Wide(1)})),
            'kind': (thing(), thing({**style, 'a': True})),
            'order of keys': (thing(), thing(dict(reversed(style.items())))),
            'key more': (thing(), thing({**style, 'c': NIL})),
            'chain': (thing(), thing(chain=('ZZ', '%ZZ', 'NSObject'))),
            'no chain': (thing(), thing(has_chain=False)),
            'substitutes': (thing(), thing(hints=['NSString'])),
            'split': ([shared, shared], [shared, mutable_string('x')]),
            'merged': ([shared, mutable_string('x')], [shared, shared]),
            'null': (thing({'a': NIL}), thing({'a': archives.Conditional(gone)})),
            'null apart': (thing({'a': archives.Conditional(gone), 'b': archives.Conditional(gone)}),
                           thing({'a': archives.Conditional(gone),
                                  'b': archives.Conditional(Instance('ZZGone'))})),
            'inline': (thing({'a': 'x'}), thing({'a': ref('x')})),
            'order of entries': ({'a': 1, 'b': 2}, {'b': 2, 'a': 1}),
            'not escaped': ('a $null', 'a $null'), 'escaped twice': ('$null x', '\\\\$null x'),
            'mutable': (mutable_string('x'), 'x'), 'sign of zero': (0.0, -0.0),
        }
        for name, (one, other) in pairs.items():
            with self.subTest(name):
                with self.assertRaises(Difference):
                    compared(made(one), made(other), ['k'])
        compared(made('a $null'), made('a \\$null'), ['k'])
        compared(made(thing()), made(thing()), ['k'])
        compared(made(['x', Value('x')]), made(['x', 'x']), ['k'])
        for keywords, more in ((['l'], {}), (['k'], {'version': 1})):
            with self.assertRaises(Difference):
                compared(made('x'), made('x', **more), keywords)


class Fidelity(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.path = os.path.join(self.folder, 'document.tavlin')

    def tearDown(self):
        shutil.rmtree(self.folder)

    def run_tool(self, *arguments):
        done = subprocess.run([TOOL, *arguments], capture_output=True, timeout=300)
        self.assertEqual(done.returncode, 0, done)
        return done.stdout

    def read(self):
        with open(self.path, 'rb') as stream:
            return stream.read()

    def save(self, content):
        with open(self.path, 'wb') as stream:
            stream.write(content)

    def rewritten(self, content, keywords=KEYWORDS):
        self.save(content)
        self.run_tool('-w', self.path, *keywords)
        return self.read()

    def write_twice(self, content, keywords=KEYWORDS):
        """What a write makes of a document; a second write must change nothing."""
        once = self.rewritten(content, keywords)
        self.assertEqual(self.rewritten(once, keywords), once, 'a second write changes the file')
        # what is changed in place keeps the order, and the habits, of the file that it was
        if not content.startswith(b'bplist') or writing.is_anew(content, once):
            self.assertEqual(list(archives.archive_flaws(once)), [])
        return once

    def check(self, content, keywords=KEYWORDS):
        after = self.write_twice(content, keywords)
        self.compare(content, after, keywords)
        return after

    def for_each_kind(self, action):
        for name, make in KINDS.items():
            with self.subTest(name):
                action(make)

    def test_every_kind_in_every_place(self):
        self.for_each_kind(lambda make: self.check(document(placed(make))))

    def test_every_kind_alone_in_the_properties(self):
        self.for_each_kind(lambda make: self.check(document(node(
            {'documentProperties': properties(['old'], ('only', make()))}))))

    def test_every_kind_without_keywords_before(self):
        self.for_each_kind(lambda make: self.check(document(node(
            {'documentProperties': properties(None, ('only', make()))}))))

    def test_growth(self):
        def grows(make):
            before = document(placed(make))
            smallest = document(placed(make, KEYWORDS))
            # each repaired text is a byte longer, or two; the archive has its own overhead
            repairs = 8 * sum('$null' in each for each in texts_of(Archive(before)))
            self.assertLess(len(self.rewritten(before)), len(smallest) * 1.02 + repairs + 30)
        self.for_each_kind(grows)

    def test_xml_documents(self):
        """The XML form has no widths: integers and reals are taken in their usual ones."""
        for name, make in KINDS.items():
            if name in ('inline values', 'wide integers', 'reals', 'singles', 'unpaired surrogates'):
                continue  # these hold what XML cannot say
            with self.subTest(name):
                self.save(as_xml(property_list(archives.controller(placed(make)))))
                self.run_tool('-w', self.path, *KEYWORDS)
                once = self.read()
                self.assertEqual(self.rewritten(once), once)
                as_read = archives.plain(Archive(as_xml(property_list(
                    archives.controller(placed(make))))).list)
                self.compare(as_read, once)

    def compare(self, before, after, keywords=KEYWORDS):
        try:
            compared(before, after, keywords)
        except Difference as difference:
            self.fail(str(difference))

    # Other readers.

    def test_libplist_reads_what_was_written(self):
        if not shutil.which('plistutil'):
            self.skipTest('plistutil is not installed')
        for name, make in KINDS.items():
            if name == 'unpaired surrogates':
                continue  # it has no form for them
            with self.subTest(name):
                after = self.rewritten(document(placed(make)))
                done = subprocess.run(['plistutil', '-i', self.path, '-f', 'xml'],
                                      capture_output=True, timeout=60)
                self.assertEqual(done.returncode, 0, done.stderr)
                self.assertIn(b'NSKeyedArchiver', done.stdout)
                self.assertIn(b'<key>encoding_version</key>', done.stdout)
                # it says how many objects it found; all of them arrive
                self.assertEqual(done.stdout.count(b'<key>expanded</key>'),
                                 Archive(after).count('OLNode'))

    def test_python_reads_what_was_written(self):
        for name, make in KINDS.items():
            if name == 'unpaired surrogates':
                continue  # it refuses them
            with self.subTest(name):
                after = self.rewritten(document(placed(make)))
                mine = Archive(after).list
                theirs = archives.plistlib.loads(after)
                self.assertEqual(repr(simple(mine)), repr(simple(theirs)))

    # The top.

    def test_other_entries_at_the_top_are_kept(self):
        shared = mutable_string('shared')
        root = node({'documentProperties': properties(['old']), 'shared': shared},
                    [node({'title': 'item'})])
        item = root.fields['children'].fields['NS.objects'][0]
        before = document(root, flag=True, version=7, single=archives.Single(0.5),
                          text='bare', shared=shared, item=item, thing=Instance('ZZThing', {
                              'to': item, 'shared': shared}), nothing=NIL, text_entry=Value('x'))
        after = self.check(before)
        self.assertEqual(Archive(after).top['version'], 7)

    def test_the_order_of_entries_does_not_matter(self):
        """Class records first, the root last, entries that nothing refers to in between."""
        entries, top = archives.entries_of({'root': archives.controller(placed(KINDS['fonts']))})
        count = len(entries) - 1

        def moved(value):
            if isinstance(value, archives.UID):
                return archives.UID(value.data and 2 * (count - value.data) + 3)
            if isinstance(value, list):
                return [moved(each) for each in value]
            if isinstance(value, dict):
                return {key: moved(each) for key, each in value.items()}
            return value
        mixed = ['$null', 'unused', ['unused', 'array']]
        for entry in reversed(entries[1:]):
            mixed += [moved(entry), {'unused': 1}]
        before = archives.plain({'$top': moved(top), '$objects': mixed,
                                 '$archiver': 'NSKeyedArchiver', '$version': 100000})
        after = self.check(before)
        self.assertFalse(writing.is_anew(before, after))

    def test_entries_that_are_one_object_of_the_file_stay_two(self):
        twin = {'$class': archives.UID(0)}
        plist = property_list(archives.controller(node(
            {'documentProperties': properties(['old']),
             'twins': [Instance('ZZTwin'), Instance('ZZTwin')]})))
        entries = plist['$objects']
        twins = [i for i, each in enumerate(entries) if isinstance(each, dict) and
                 '$class' in each and entries[each['$class'].data]['$classname'] == 'ZZTwin']
        self.assertEqual(len(twins), 2)
        twin['$class'] = entries[twins[0]]['$class']
        for place in twins:
            entries[place] = twin
        self.check(archives.plain(plist))

    def test_a_key_twice_in_a_record_is_refused(self):
        """The format's own reader takes the first, other readers the last or none: no guess is
        safe, and the file stays as it is."""
        plist = property_list(archives.controller(node(
            {'documentProperties': properties(['old']), 'x': Instance('ZZ', {'a': 1})})))
        entries = plist['$objects']
        place = next(i for i, each in enumerate(entries) if isinstance(each, dict) and 'a' in each)
        entries[place] = archives.Pairs([*entries[place].items(), ('a', 2)])
        self.save(archives.plain(plist))
        before = self.read()
        done = subprocess.run([TOOL, '-w', self.path, 'x'], capture_output=True)
        self.assertEqual(done.returncode, 255)
        self.assertIn(b'the key "a" occurs twice', done.stderr)
        self.assertEqual(self.read(), before)

    # Versions.

    def test_versions_are_those_of_each_record(self):
        texts = ['$null', 'a $null', '\\$null', '\\\\$null', 'größe \\$null', 'plain']
        versions = [None, 0, 1, 2, 3, -1, ref(0), ref(1), ref(2), ref(3), NIL, 1.0, 2.0, True,
                    archives.Wide(2), ref(2.5)]
        values = [mutable_string(texts[0]), *texts[1:], {'k $null': texts[1:]}]
        shared = array(values)
        items = [node({'title': 'v', 'list': values, 'shared': shared}, version=version)
                 for version in versions]
        for version in (None, 1, 2, ref(2)):
            with self.subTest(version):
                root = node({'documentProperties': properties(['old']), 'shared': shared,
                             'list': values}, items, version=version)
                self.check(document(root))

    # Sharing.

    def shared_by_many(self, value, count):
        before = document(node(
            {'documentProperties': properties(['old'], ('shared', value)), 'shared': value},
            [node({'title': value, 'n': n}) for n in range(count)]))
        return self.check(before)

    def test_shared_values_stay_shared(self):
        rich = attributed('rich $null', {'NSFont': font()})
        for name, value in (('text', mutable_string('a $null')), ('data', mutable_data(b'$null')),
                            ('list', array(['a $null', {'k': '\\$null'}])),
                            ('rich text', rich), ('object', Instance('ZZ', {'a': 1}))):
            with self.subTest(name):
                self.shared_by_many(value, 10000 if name == 'text' else 500)

    def test_what_is_replaced_stays_with_its_other_holders(self):
        keywords, title = array(['old', mutable_string('older')]), mutable_string('title $null')
        settings = dictionary({'keywords': keywords, 'title': title})
        item = node({'settings': settings, 'keywords': keywords, 'title': title})
        after = Archive(self.write_twice(document(node({'documentProperties': settings}, [item]))))
        self.assertEqual(after.keywords(), [archives.repaired(each, False) for each in KEYWORDS])
        root = after.objects[after.root()]
        mine = after.entries(root['data'].data)['documentProperties']
        child = after.objects[root['children'].data]['NS.objects'][0].data
        data = after.entries(after.target(child, 'data'))
        theirs = after.entries(data['settings'])
        self.assertNotEqual(data['settings'], mine)
        self.assertEqual(theirs['keywords'], data['keywords'])
        self.assertEqual(after.objects[after.objects[data['keywords']]['NS.objects'][0].data], 'old')
        self.assertEqual({theirs['title'], data['title']}, {after.entries(mine)['title']})
        self.assertEqual(after.objects[data['title']]['NS.string'], 'title \\$null')

    def test_text_in_a_private_font_is_repaired_once(self):
        looks = dictionary({'NSFont': font('.HelveticaNeueDeskUI', 13.0, 1044)})
        rich = attributed('rich', looks)
        before = document(node(
            {'documentProperties': properties(['old'], ('shared', rich)), 'shared': [rich]},
            [node({'title': rich, 'list': [rich, '$null']}, version=n % 3) for n in range(50)]))
        after = Archive(self.write_twice(before))
        self.assertEqual(after.count('NSAttributedString'), 1)
        self.assertNotIn('.HelveticaNeueDeskUI', after.objects)
        self.assertLessEqual(after.count('NSFont'), 1)


def texts_of(archive):
    for entry in archive.objects[1:]:
        if isinstance(entry, str):
            yield entry
        elif isinstance(entry, dict) and isinstance(entry.get('NS.string'), str):
            yield entry['NS.string']


def simple(value):
    """Without the kinds that Python does not know."""
    if isinstance(value, list):
        return [simple(each) for each in value]
    if isinstance(value, dict):
        return {key: simple(each) for key, each in value.items()}
    if isinstance(value, archives.Date):
        return datetime.datetime(2001, 1, 1) + datetime.timedelta(seconds=value)
    return float(value) if isinstance(value, float) else value


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
