"""Documents of any writer are changed where they are to be, and nowhere else.

    writers_test.py TAVLIN-KEYWORDS OUTLINE-MAKE

Every document comes in the hands of several writers.  After a write the graph of objects is the
same but for the keywords, every other entry of the archive is the same byte for byte, and of a
keyword that was removed nothing is left in the file.
"""
import plistlib
import shutil
import subprocess
import sys
import unittest

import archives
from archives import (Archive, Instance, UID, array, attributed, dictionary, document,
                      mutable_string, node, plain)
from graphs import Graph, same
from kinds import KINDS, placed, properties
from stored import Source
from variants import LAYOUTS, VARIANTS, added, outline, records, shuffled, unused_entries, varied, with_more
from writers import HANDS, written_by
from writing import (Case, idle, is_in, keywords_of, same_but_keywords, without_keywords)

MAKE = sys.argv[2]
OLD = ['old', 'older, and long']


class Writers(Case):
    """The hands are what they are said to be."""

    def test_the_own_hand_is_what_the_program_writes(self):
        for count in (1, 40, 300):
            subprocess.run([MAKE, self.path, str(count)], check=True)
            with open(self.path, 'rb') as stream:
                data = stream.read()
            self.assertEqual(list(archives.archive_flaws(data)), [])
            self.assertEqual(written_by('own', data), data)

    def test_plistlib_writes_what_its_hand_does(self):
        for count in (1, 40, 300):
            data = plain(outline(count))
            self.assertEqual(written_by('plistlib', data),
                             plistlib.dumps(self.anew(plistlib.loads(data)), fmt=plistlib.FMT_BINARY))

    def anew(self, value):
        """With an object of its own for each mention."""
        if isinstance(value, dict):
            return {key: self.anew(each) for key, each in value.items()}
        if isinstance(value, list):
            return [self.anew(each) for each in value]
        return UID(value.data) if isinstance(value, UID) else value

    def test_hands_hold_the_same_graph(self):
        def check(name):
            data = plain(outline(60)) if name == 'outline' else document(placed(KINDS[name]))
            for hand in HANDS:
                if hand == 'plistlib':
                    continue  # it changes the order of keys
                same(data, written_by(hand, data))
        self.each(['outline', *KINDS], check)

    def test_the_platform_hand(self):
        data = written_by('platform', plain(outline()))
        archive, source = Archive(data), Source(data)
        places = [list(entry).index('$class') / (len(entry) - 1) for entry in archive.objects
                  if isinstance(entry, dict) and '$class' in entry]
        self.assertGreater(sum(place == 0 for place in places), 0.35 * len(places))
        self.assertGreater(sum(0 < place < 1 for place in places), 0.15 * len(places))
        self.assertGreater(sum(place == 1 for place in places), 0.15 * len(places))
        raws = [source.raw(index) for index in range(source.count) if source.kind(index) < 0xA]
        self.assertEqual(raws.count(archives.scalar_bytes(2)), 2)
        self.assertGreater(raws.count(archives.scalar_bytes(UID(archive.root()))), 1)
        self.assertEqual(len(idle(data)), 1)
        root = archive.root()
        self.assertEqual(archive.target(root, 'children'), root + 1)
        self.assertGreater(archive.target(root, 'data'), 200)

    def test_the_backwards_hand(self):
        archive = Archive(written_by('backwards', plain(outline())))
        for number, entry in enumerate(archive.objects):
            if archive.objects[1:] and isinstance(entry, dict) and 'children' in entry:
                self.assertLess(entry['children'].data, number)
        self.assertEqual(archive.top['root'].data, len(archive.objects) - 1)


class Keywords(Case):
    """Small and middle documents of each writer."""

    def check_steps(self, data):
        """Adds keywords, changes one, removes one, all, and puts one there again."""
        data = self.check_in_place(data, *OLD, 'new', 'größe')
        data = self.check_in_place(data, 'old', 'changed', 'new', 'größe')
        data = self.check_in_place(data, 'old', 'new')
        data = self.check_in_place(data)
        return self.check_in_place(data, 'last')

    def test_every_variant_of_every_writer(self):
        for name in VARIANTS:
            data = plain(varied(name, outline(60)))
            for hand in HANDS:
                with self.subTest(name, hand=hand):
                    self.check_steps(written_by(hand, data))

    def test_every_layout_of_every_writer(self):
        for hand in HANDS:
            data = written_by(hand, plain(outline(60)))
            for name, laid in LAYOUTS.items():
                with self.subTest(name, hand=hand):
                    self.check_steps(laid(data))

    def test_entries_that_nothing_refers_to(self):
        for changed in (lambda data: data, shuffled):
            self.check_steps(changed(plain(unused_entries(outline(60)))))

    def test_without_keywords_before(self):
        for hand in HANDS:
            with self.subTest(hand):
                self.check_steps_without(written_by(hand, plain(outline(60, None))))

    def check_steps_without(self, data):
        after = self.written(data, 'new')
        graph, before = Graph(after), Graph(data)
        self.assertEqual(keywords_of(graph), ['new'])
        same(*map(without_keywords, (before, graph)))
        self.check_in_place(self.check_in_place(after, 'new', 'newer'), 'newer')

    def test_every_kind_of_every_writer(self):
        """Values of every kind in every place; here and there a text is repaired."""
        def check(name):
            data = document(placed(KINDS[name]))
            for hand in HANDS:
                before = written_by(hand, data)
                after = self.written(before, 'n', 'größe')
                archives.compared(before, after, ['n', 'größe'])
                self.assertEqual(self.written(after, 'n', 'größe'), after)
                again = self.written(after, 'm')
                archives.compared(after, again, ['m'])
        self.each(KINDS, check)

    def test_the_class_of_the_properties_stays_theirs(self):
        """There is another record of that class, of which the properties are not."""
        plist = outline(20)
        settings = [entry for entry in records(plist, 'NSDictionary')]
        own = next(each for each in settings if len(each['NS.keys']) > 2)
        own['$class'] = added(plist, {**plist['$objects'][own['$class'].data], 'ZZVersion': 7})
        for hand in HANDS:
            with self.subTest(hand):
                after = Archive(self.check_written(written_by(hand, plain(plist)), 'new'))
                self.assertEqual(sum('ZZVersion' in entry for entry in after.objects
                                     if isinstance(entry, dict)), 1)

    def test_properties_that_items_share(self):
        """What another item holds stays its own."""
        for hand in HANDS:
            with self.subTest(hand):
                words = array(['old', 'older'])
                settings = dictionary({'title': 'T', 'keywords': words})
                data = document(node({'documentProperties': settings}, [
                    node({'title': 'a', 'settings': settings}), node({'title': 'b', 'w': words})]))
                after = self.written(written_by(hand, data), 'new')
                graph = Graph(after)
                self.assertEqual(graph.keywords(), ['new'])
                self.assertTrue(is_in('older', after))
                words = graph.objects[graph.entries(graph.target(graph.item('2'), 'data'))['w']]
                self.assertEqual([graph.objects[each.data] for each in words['NS.objects']],
                                 ['old', 'older'])
                theirs = graph.entries(graph.target(graph.item('1'), 'data'))['settings']
                self.assertEqual(graph.objects[graph.entries(theirs)['keywords']], words)


class Removed(Case):
    """What was removed is gone, unless something else is that text."""

    TEXTS = {'short': 'zzgone', 'long': 'zzgone ' * 3000, 'wide': 'zzgöne 日本 \U0001F33F',
             'long and wide': 'zzgöne' * 5000}

    def test_texts(self):
        for hand in HANDS:
            for name, text in self.TEXTS.items():
                with self.subTest(name, hand=hand):
                    before = written_by(hand, plain(outline(60, ['a', text, 'b'])))
                    self.assertTrue(is_in(text, before))
                    after = self.check_in_place(before, 'a', 'b')
                    self.assertFalse(is_in(text[:8], after))
                    self.assertFalse(is_in(text[:8], self.written(before)))

    def test_several(self):
        for hand in HANDS:
            with self.subTest(hand):
                gone = ['zzgone%dü' % number if number % 2 else 'zzgone%d' % number
                        for number in range(60)]
                before = written_by(hand, plain(outline(600, ['a', *gone, 'b'])))
                after = self.check_written(before, 'b', 'c')
                for text in gone:
                    self.assertFalse(is_in(text, after), text)

    def test_in_every_layout(self):
        for hand in HANDS:
            for name, laid in LAYOUTS.items():
                with self.subTest(name, hand=hand):
                    before = laid(written_by(hand, plain(outline(60, ['zzgone', 'a']))))
                    self.assertFalse(is_in('zzgone', self.check_written(before, 'a')))

    def test_in_every_variant(self):
        for hand in HANDS:
            for name in VARIANTS:
                with self.subTest(name, hand=hand):
                    before = written_by(hand, plain(varied(name, outline(60, ['zzgone', 'a']))))
                    self.assertFalse(is_in('zzgone', self.check_written(before, 'a')))

    def test_orphans_that_mention_it(self):
        """UIDs and containers that nothing refers to do not keep a keyword."""
        for hand in HANDS:
            data = written_by(hand, plain(outline(60, ['zzgone', 'a'])))
            numbers = range(len(Source(data).entries))
            with self.subTest(hand):
                before = with_more(data, [archives.scalar_bytes(UID(each)) for each in numbers])
                self.assertFalse(is_in('zzgone', self.check_written(before, 'a')))

    def test_keywords_that_are_also_keys_and_classes(self):
        """Equal texts are one object of the file for several writers."""
        for text in ('title', 'children', 'OLNode', 'keywords', 'documentProperties', 'NS.objects',
                     '$class', '$classes', '$objects', 'root', 'NSKeyedArchiver', 'Helvetica',
                     'Title', 'naïve', 'NSObject', 'encoding_version'):
            for hand in HANDS:
                with self.subTest(text, hand=hand):
                    before = written_by(hand, plain(outline(20, ['a', text, 'naïve'])))
                    after = self.check_in_place(before, 'a')
                    self.assertEqual(is_in(text, before), is_in(text, after))
                    self.check_in_place(after, text, 'a')

    def test_what_others_use_stays(self):
        """Text of a title, in a record, in a list, and of a title as its own entry."""
        thing = Instance('ZZThing', {'inside': 'zzkept', 'list': ['zzkept']})
        uses = {'title': {'title': 'zzkept'}, 'mutable text': {'title': mutable_string('zzkept')},
                'record': {'title': 'x', 'thing': thing}, 'key': {'title': 'x', 'zzkept': 1},
                'rich text': {'title': attributed('zzkept', {})}}
        for name, data in uses.items():
            for hand in HANDS:
                with self.subTest(name, hand=hand):
                    before = written_by(hand, document(node(
                        {'documentProperties': properties(['zzkept', 'a'])}, [node(data)])))
                    self.assertTrue(is_in('zzkept', self.check_in_place(before, 'a')))

    def test_equal_keywords(self):
        """One of two equal ones leaves the other."""
        for hand in HANDS:
            with self.subTest(hand):
                before = written_by(hand, plain(outline(20, ['zz', 'zz', 'a'])))
                after = self.check_in_place(before, 'zz', 'a')
                self.assertTrue(is_in('zz', after))
                self.assertFalse(is_in('zz', self.check_in_place(after, 'a')))


class Growth(Case):
    def test_adding_and_removing_by_turns(self):
        """Fifty times: the file is hardly larger than the first time."""
        for hand in HANDS:
            with self.subTest(hand):
                data = self.written(written_by(hand, plain(outline(400))), 'a', 'b')
                few = most = len(data)
                for turn in range(50):
                    added = ['keyword %d of %d, größe' % (number, turn) for number in range(5)]
                    more = self.written(data, 'a', *added, 'b')
                    data = self.written(more, 'a', 'b')
                    most = max(most, len(data))
                same_but_keywords(written_by(hand, plain(outline(400))), data, ['a', 'b'])
                self.assertLessEqual(most, few * 1.01)

    def test_from_one_change_to_the_next(self):
        """Each time other keywords, of other lengths, more and fewer."""
        for hand in HANDS:
            with self.subTest(hand):
                first = written_by(hand, plain(outline(400)))
                data = first
                for turn in range(40):
                    keywords = ['k%d' % number * (turn % 9 + 1) for number in range(turn * 7 % 12)]
                    data = self.written(data, *keywords)
                    self.assertLessEqual(len(idle(data)), len(idle(first)))
                self.assertLessEqual(len(self.written(data, *OLD)), len(first) * 1.01 + 64)


class OtherReaders(Case):
    def test_libplist_reads_what_was_written(self):
        if not shutil.which('plistutil'):
            self.skipTest('plistutil is not installed')
        for hand in HANDS:
            for name in ('as it is', 'in any order', 'gaps', 'orphans'):
                with self.subTest(name, hand=hand):
                    count = 60
                    self.written(LAYOUTS[name](written_by(hand, plain(outline(count)))), 'x', 'größe')
                    done = subprocess.run(['plistutil', '-i', self.path, '-f', 'xml'],
                                          capture_output=True, timeout=60)
                    self.assertEqual(done.returncode, 0, done.stderr)
                    self.assertEqual(done.stdout.count(b'<key>expanded</key>'), count + 1)
                    self.assertIn('größe'.encode(), done.stdout)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
