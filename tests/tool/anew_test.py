"""Where a document is archived anew, and that this gives the graph that a change in place gives.

    anew_test.py TAVLIN-KEYWORDS

A document is archived anew only where something in its items has to change, or where its file
cannot hold what is added.
"""
import sys
import unittest

import archives
from archives import Difference, Single, UID, Wide, as_xml, attributed, document, node, plain
from kinds import font, properties
from stored import Source, Table
from variants import MERGED, VARIANTS, added, outline, records, varied, with_more
from writers import HANDS, written_by
from writing import Case, is_anew, is_in, one_graph

FOREIGN = [hand for hand in HANDS if hand != 'own']
KEYWORDS = ['old', 'older, and long', 'new']
# One item's version that asks for archiving anew.
OLDER = 1


def with_version(plist, version, number=5):
    """One item of a version; None takes its version away."""
    item = list(records(plist, 'OLNode'))[number]
    item['encoding_version'] = version(plist) if callable(version) else version
    if item['encoding_version'] is None:
        del item['encoding_version']
    return plist


class Anew(Case):
    def for_each_hand(self, data, check):
        for hand in FOREIGN:
            with self.subTest(hand=hand):
                check(written_by(hand, data))

    def anew(self, before, *keywords):
        after = self.written(before, *(keywords or KEYWORDS))
        self.assertEqual(self.written(after, *(keywords or KEYWORDS)), after)
        self.assertTrue(is_anew(before, after), 'it was changed in place')
        return after

    def in_place(self, before, *keywords):
        after = self.written(before, *(keywords or KEYWORDS))
        self.assertFalse(is_anew(before, after), 'it was archived anew')
        return after

    def test_both_ways_give_one_graph(self):
        for name in sorted(VARIANTS.keys() - {MERGED}):
            newer = varied(name, outline(60))
            older = with_version(varied(name, outline(60)), OLDER)
            for hand in FOREIGN:
                with self.subTest(name, hand=hand):
                    one = self.in_place(written_by(hand, plain(newer)))
                    other = self.anew(written_by(hand, plain(older)))
                    self.compare(one, other)
                    self.compare(self.written(one), self.written(other))

    def compare(self, one, other):
        try:
            one_graph(one, other)
        except Difference as difference:
            self.fail(str(difference))

    # What asks for it.

    def test_an_item_of_another_version(self):
        """What counts is the value, whatever the number's kind."""
        for version in (None, 0, 1, 3, -1, True, 1.0, 2.5, Wide(1), lambda plist: added(plist, 1)):
            self.for_each_hand(plain(with_version(outline(40), version)), self.anew)
        for version in (2, 2.0, Single(2), Wide(2), lambda plist: added(plist, 2),
                        lambda plist: added(plist, 2.0)):
            self.for_each_hand(plain(with_version(outline(40), version)), self.in_place)

    def private_font(self, **more):
        rich = attributed('rich', {'NSFont': font('.HelveticaNeueDeskUI', 13.0, 1044)})
        tops = [node({'title': rich})] + [node({'title': str(number)}) for number in range(40)]
        return document(node({'documentProperties': properties(KEYWORDS[:2]), **more}, tops))

    def test_a_font_that_is_replaced(self):
        def check(before):
            after = self.anew(before)
            self.assertFalse(is_in('.HelveticaNeueDeskUI', after))
        self.for_each_hand(self.private_font(), check)

    def test_a_text_that_is_repaired(self):
        def check(before):
            self.assertTrue(is_in('a \\$null', self.anew(before)))
        tops = [node({'title': 'a $null' if number == 3 else str(number)}) for number in range(40)]
        self.for_each_hand(document(node({'documentProperties': properties(KEYWORDS[:2])}, tops)),
                           check)

    def test_references_that_become_wider(self):
        """255 and 65535 objects are the most that references of one and of two bytes name."""
        for limit in (255, 65535):
            data = plain(outline(1 if limit == 255 else 1000))
            for hand in FOREIGN:
                with self.subTest(limit, hand=hand):
                    before = written_by(hand, data)
                    room = limit - Source(before).count
                    self.assertGreater(room, 0)
                    full = with_more(before, [b'\x08'] * room)
                    self.assertEqual(Source(full).width, 1 if limit == 255 else 2)
                    self.compare(self.anew(full), self.written(before, *KEYWORDS))
                    spacious = with_more(before, [b'\x08'] * (room - 60))
                    self.compare(self.in_place(spacious), self.written(before, *KEYWORDS))

    def test_items_that_are_no_tree(self):
        def shared(plist):
            """An item in two lists of children."""
            entries = plist['$objects']
            lists = {number: entries[entry['children'].data]['NS.objects'] for number, entry in
                     enumerate(entries) if isinstance(entry, dict) and 'children' in entry}
            leaf = next(number for number in lists if not lists[number])
            other = next(number for number in reversed(lists) if not lists[number])
            lists[other].append(UID(leaf))

        def named(plist):
            """An item that data names."""
            numbers = [number for number, entry in enumerate(plist['$objects'])
                       if isinstance(entry, dict) and 'encoding_version' in entry]
            data = plist['$objects'][plist['$objects'][numbers[4]]['data'].data]
            data['NS.keys'].append(added(plist, 'other'))
            data['NS.objects'].append(UID(numbers[7]))

        def top(plist):
            """The controller, twice in the top."""
            plist['$top']['again'] = plist['$top']['root']
        for make in (shared, named, top):
            with self.subTest(make.__name__):
                plist = outline(40)
                make(plist)
                self.for_each_hand(plain(plist), self.anew)

    def test_much_that_would_be_left_over(self):
        """More than one part in a hundred of the file."""
        many = ['keyword %d' % number for number in range(1000)]
        self.for_each_hand(plain(outline(40, [*KEYWORDS[:2], *many])), self.anew)

    def test_objects_with_bytes_in_common(self):
        """An object that begins within another one would be cut with it."""
        def check(before):
            table = Table(before)
            overlapping = bytearray(with_more(before, [b'\x08']))
            source = Source(bytes(overlapping))
            size, start = overlapping[-26], int.from_bytes(overlapping[-8:], 'big')
            at = source.offsets[next(i for i in range(table.source.count)
                                     if source.raw(i) == archives.scalar_bytes('old'))]
            place = start + (source.count - 1) * size
            overlapping[place:place + size] = (at + 1).to_bytes(size, 'big')
            overlapping[at + 1:at + 4] = b'\x08ld'
            after = self.anew(bytes(overlapping), 'new')
            self.compare(after, self.written(before, 'new'))
        self.for_each_hand(plain(outline(40)), check)

    def test_xml(self):
        """It becomes binary."""
        plist = outline(40)
        after = self.written(as_xml(plist), *KEYWORDS)
        self.compare(after, self.written(plain(plist), *KEYWORDS))

    def test_lists_of_children_of_an_old_form(self):
        plist = outline(40)
        for entry in records(plist, 'NSMutableArray'):
            entry.update({'NS.object.%d' % i: each for i, each in enumerate(entry.pop('NS.objects'))})
        self.for_each_hand(plain(plist), self.anew)

    def test_items_without_lists_of_children_or_flags(self):
        plist = outline(40)
        for number, entry in enumerate(records(plist, 'OLNode')):
            if plist['$objects'][entry['children'].data]['NS.objects'] == []:
                for key in ('children', 'expanded', 'outlineStyle', 'parent')[number % 4:]:
                    del entry[key]
        self.for_each_hand(plain(plist), self.anew)

    # What does not.

    def test_properties_that_are_shared(self):
        """An item with the same settings keeps them."""
        settings = properties(KEYWORDS[:2])
        tops = [node({'title': str(number), 'settings': settings}) for number in range(40)]
        self.for_each_hand(document(node({'documentProperties': settings}, tops)), self.in_place)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
