"""What `tavlin check` finds in documents, and what its repair makes of them.

Each document at fault is made beside the one that it should become: after a repair the graph of
objects is that of the latter, entry by entry, with classes, order of keys, kinds and widths, and
what is shared.  A second check finds nothing but notes and what cannot be repaired.

    check_test.py TAVLIN TAVLIN-KEYWORDS GARDEN-DOCUMENT
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'tool'))
import archives
from archives import (Archive, Conditional, Instance, MUTABLE_ARRAY, MUTABLE_DICTIONARY, NIL, UID,
                      Value, array, attributed, dictionary, document, mutable_data, mutable_string,
                      node, numbers, property_list, ref)
from graphs import described
from kinds import KINDS, font, placed, properties

TOOL, KEYWORDS_TOOL, GARDEN = map(os.path.abspath, sys.argv[1:4])


def ballast():
    """Items that hold a value of every kind and have nothing to do with what is at fault."""
    return [node({'title': name, 'value': make(), 'list': [make(), 1]})
            for name, make in KINDS.items()]


def items(*titles, **fields):
    return [node({'title': title}, **fields) for title in titles]


def outline(children, **more):
    return document(node({'documentProperties': properties(['old'])}, [*children, *ballast()],
                         **more))


class Checking(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.path = os.path.join(self.folder, 'document.tavlin')

    def tearDown(self):
        shutil.rmtree(self.folder)

    def save(self, content, name='document.tavlin'):
        path = os.path.join(self.folder, name)
        with open(path, 'wb') as stream:
            stream.write(content)
        return path

    def read(self):
        with open(self.path, 'rb') as stream:
            return stream.read()

    def run_tool(self, *arguments, **more):
        return subprocess.run([TOOL, *arguments], capture_output=True, timeout=120, **more)

    def checked(self, *options):
        """The status and the findings of the document, as JSON has them."""
        done = self.run_tool('check', '--json', *options, self.path)
        self.assertEqual(done.stderr, b'')
        found = json.loads(done.stdout)
        self.assertEqual(list(found), ['file', 'findings', 'repaired'])
        self.assertEqual(found['file'], self.path)
        severities = {'font': 'warning', 'unused': 'note', 'version': 'note'}
        for each in found['findings']:
            self.assertEqual(list(each), ['path', 'severity', 'code', 'text', 'repairable'])
            self.assertEqual(each['severity'], severities.get(each['code'], 'error'))
            self.assertNotIn('\n', each['text'])
        return done.returncode, found

    def facts(self, found):
        return [(each['path'], each['code'], each['repairable']) for each in found['findings']]

    def check_repair(self, fault, expected, *facts, left=()):
        """Finds `facts` in a document and repairs it to what is expected."""
        self.save(fault)
        status, found = self.checked()
        self.assertEqual(self.facts(found), list(facts))
        self.assertEqual((status, found['repaired']), (1, 0))
        self.assertEqual(self.read(), fault, 'a check changes nothing')
        status, found = self.checked('--repair')
        self.assertEqual(self.facts(found), list(facts))
        self.assertEqual(found['repaired'], sum(each[2] for each in facts))
        repaired = self.read()
        # what would be lost otherwise stays, although nothing refers to it
        self.assertEqual([flaw for flaw in archives.archive_flaws(repaired)
                          if not (left and 'nothing refers' in flaw)], [])
        self.assertEqual(described(repaired), described(expected))
        again = self.checked('--repair')
        self.assertEqual(self.facts(again[1]), list(left))
        self.assertEqual(status, again[0])
        self.assertEqual(status, 0 if all(code in ('unused', 'version')
                                          for _, code, _ in left) else 1)
        self.assertEqual(self.read(), repaired, 'a second repair changes nothing')
        self.loads()

    def check_left(self, content, *facts, status=1):
        """Finds `facts`, none of which can be repaired."""
        self.save(content)
        expected = [(path, code, False) for path, code in facts]
        for options in ((), ('--repair',), ('--repair', '--backup')):
            found = self.checked(*options)
            self.assertEqual(self.facts(found[1]), expected)
            self.assertEqual((found[0], found[1]['repaired']), (status, 0))
            self.assertEqual(self.read(), content)
        self.assertEqual(os.listdir(self.folder), ['document.tavlin'])

    def loads(self):
        done = subprocess.run([KEYWORDS_TOOL, '-r', self.path], capture_output=True, timeout=60)
        self.assertEqual((done.returncode, done.stderr), (0, b''))


class Sound(Checking):
    def test_every_kind_of_value_is_sound(self):
        for name, make in KINDS.items():
            with self.subTest(name):
                self.save(document(placed(make)))
                done = self.run_tool('check', self.path)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b'', b''))

    def test_xml_is_sound(self):
        self.save(archives.as_xml(property_list(archives.controller(placed(KINDS['runs'])))))
        self.assertEqual(self.checked(), (0, {'file': self.path, 'findings': [], 'repaired': 0}))

    def test_an_outline_of_the_program_is_sound(self):
        shutil.copy(GARDEN, self.path)
        self.assertEqual(self.checked('--repair')[1]['findings'], [])
        with open(GARDEN, 'rb') as stream:
            self.assertEqual(self.read(), stream.read())

    def test_items_that_data_names_are_sound(self):
        first, inner = node({'title': 'a'}), node({'title': 'inner'})
        aside = node({'title': 'aside'}, [inner])
        self.save(outline([first, node({'title': 'b', 'see': first, 'more': array([aside])})]))
        self.assertEqual(self.checked()[1]['findings'], [])

    def test_versions_of_old(self):
        self.save(outline([node({'title': 'a'}, version=version)
                           for version in (None, 0, 1, 2, 1.0, True)]))
        self.assertEqual(self.checked()[1]['findings'], [])

    def test_a_document_without_properties_or_with_null_ones(self):
        for root in ({}, {'documentProperties': None},
                     {'documentProperties': {'keywords': None, 'title': None}},
                     {'documentProperties': {'keywords': [attributed('rich', {})], 'authors': [],
                                             'title': mutable_string('x')}}):
            self.save(document(node(root)))
            self.assertEqual(self.checked()[1]['findings'], [])


class ParentLinks(Checking):
    def linked(self, link):
        """An outline in which item 2.1.1 has the link that a function of some items answers."""
        deep = node({'title': 'deep'})
        inner = node({'title': 'inner'}, [deep, *items('x')])
        first, second = node({'title': 'first'}), node({'title': 'second'}, [inner])
        root = node({'documentProperties': properties(['old'])}, [first, second, *ballast()])
        link(deep, first, root)
        return document(root)

    def check_link(self, link, *left):
        self.check_repair(self.linked(link), self.linked(lambda *all: None),
                          ('2.1.1', 'parent-link', True), left=left)

    def test_links_that_lead_elsewhere(self):
        def to(value):
            def link(item, first, root):
                item.fields['parent'] = value(item, first, root)
            return link
        self.check_link(to(lambda item, first, root: Conditional(first)))
        self.check_link(to(lambda item, first, root: Conditional(root)))
        self.check_link(to(lambda item, first, root: Conditional(item)))
        self.check_link(to(lambda item, first, root: NIL))
        self.check_link(to(lambda item, first, root: Conditional(Instance('OLNode'))))
        self.check_link(to(lambda item, first, root: 'in place'))
        self.check_link(to(lambda item, first, root: Value('text')))

    def test_a_missing_link(self):
        def link(item, first, root):
            del item.fields['parent']
        self.check_link(link)

    def test_a_link_out_of_the_outline_loses_nothing(self):
        lost = node({'title': 'nowhere else'}, items('below'))

        def link(item, first, root):
            item.fields['parent'] = lost
        self.check_link(link, (None, 'unused', False))
        self.assertIn('nowhere else', Archive(self.read()).objects)
        self.assertIn('below', Archive(self.read()).objects)

    def test_what_only_a_link_leads_to_need_not_be_an_outline(self):
        """Loading makes no item of it."""
        lost = node({'title': 'lost'}, items('below'))
        lost.fields['children'].fields['NS.objects'] += [lost, ref('no item')]

        def link(item, first, root):
            item.fields['parent'] = lost
        self.check_link(link, (None, 'unused', False))

    def test_a_link_of_the_root(self):
        for make in (lambda: node({'title': 'a'}), lambda: Value('text')):
            child = node({'title': 'a'})
            fault = outline([child], parent=child)
            self.check_repair(fault, outline([node({'title': 'a'})]),
                              (None, 'parent-link', True))

    def test_many_at_once(self):
        def made(break_them):
            children = [node({'title': str(n)}, items('x', 'y')) for n in range(300)]
            if break_them:
                for child in children:
                    child.fields['children'].fields['NS.objects'][1].fields['parent'] = NIL
            return outline(children)
        self.check_repair(made(True), made(False),
                          *[('%d.2' % (n + 1), 'parent-link', True) for n in range(300)])

    def test_fields_that_loading_leaves_out_stay(self):
        def made(parent):
            item = node({'title': '\\$null', 'x': '$null y'}, version=1, more='own', window=ref([1]))
            made = outline([item])
            if parent:
                item.fields['parent'] = parent
                made = outline_with(item)
            return made

        def outline_with(item):
            root = node({'documentProperties': properties(['old'])}, [item, *ballast()])
            item.fields['parent'] = NIL
            return document(root)
        self.check_repair(made(NIL), made(None), ('1', 'parent-link', True))


class ListedTwice(Checking):
    def copy(self, original, children=()):
        """What a repair makes of an item: the same values in a dictionary of its own."""
        data = original.fields['data']
        return node(Instance(data.chain, data.fields), children)

    def listed(self, make):
        """An outline of two items: the first holds `twice` and another, the second what `make`
        answers; with the item's link to its first parent, or the other."""
        below = node({'title': 'below', 'value': mutable_string('kept')})
        twice = node({'title': attributed('twice', {'NSFont': font()}), 'list': array([1])}, [below])
        first = node({'title': 'first'}, [twice, *items('x')])
        second = node({'title': 'second'})
        root = node({'documentProperties': properties(['old'])}, [first, second, *ballast()])
        children = make(twice, below)
        for child in children:
            if child is not twice:
                child.fields['parent'] = Conditional(second)
        second.fields['children'].fields['NS.objects'] = children
        return root, twice, second

    def check_listed(self, *facts, link=None):
        root, twice, second = self.listed(lambda item, below: [*items('before'), item])
        if link:
            twice.fields['parent'] = Conditional(link(root, second))
        expected = self.listed(lambda item, below: [
            *items('before'), self.copy(item, [self.copy(below)])])[0]
        self.check_repair(document(root), document(expected), *facts)

    def test_an_item_in_two_lists(self):
        self.check_listed(('2.2', 'listed-twice', True))

    def test_its_link_may_name_the_second(self):
        self.check_listed(('2.2', 'listed-twice', True), link=lambda root, second: second)

    def test_or_neither(self):
        self.check_listed(('1.1', 'parent-link', True), ('2.2', 'listed-twice', True),
                          link=lambda root, second: root)

    def test_an_item_twice_in_one_list(self):
        def made(is_fault):
            item = node({'title': 'a'}, items('b'))
            again = item if is_fault else self.copy(
                item, [self.copy(each) for each in
                       item.fields['children'].fields['NS.objects']])
            return outline([item, again])
        self.check_repair(made(True), made(False), ('2', 'listed-twice', True))

    def test_two_items_with_one_list(self):
        def made(is_fault):
            first = node({'title': 'first'}, items('a', 'b'))
            second = node({'title': 'second'})
            shared = first.fields['children']
            if is_fault:
                second.fields['children'] = shared
            else:
                second = node({'title': 'second'},
                              [self.copy(each) for each in shared.fields['NS.objects']])
            return outline([first, second])
        self.check_repair(made(True), made(False), ('2.1', 'listed-twice', True),
                          ('2.2', 'listed-twice', True))

    def test_links_of_a_list_of_two_items_may_name_either(self):
        first, second = node({'title': 'first'}), node({'title': 'second'}, items('a', 'b'))
        first.fields['children'] = second.fields['children']
        self.save(outline([first, second]))
        self.assertEqual(self.facts(self.checked()[1]),
                         [('2.1', 'listed-twice', True), ('2.2', 'listed-twice', True)])
        self.assertEqual(self.checked('--repair')[0], 0)
        self.assertEqual(self.checked()[1]['findings'], [])

    def test_listed_twice_below_what_is_listed_twice(self):
        def made(is_fault):
            leaf = node({'title': 'leaf'})
            def leaves():
                return self.copy(leaf)
            one = node({'title': 'one'}, [leaf])
            one.fields['children'].fields['NS.objects'].append(leaf if is_fault else leaves())
            if is_fault:
                return outline([one, one])
            one.fields['children'].fields['NS.objects'][1].fields['parent'] = Conditional(one)
            return outline([one, self.copy(one, [leaves(), leaves()])])
        self.check_repair(made(True), made(False), ('1.2', 'listed-twice', True),
                          ('2', 'listed-twice', True))

    def test_more_than_there_is_room_for(self):
        item = node({'title': 'leaf'})
        for level in range(40):
            item = node({'title': str(level)}, [item, item])
        facts = [('.'.join(['1'] * depth + ['2']), 'listed-twice') for depth in range(40, 0, -1)]
        self.check_left(outline([item]), *facts)

    def test_lists_of_an_old_form(self):
        def made(is_fault):
            item = node({'title': 'a'})
            again = item if is_fault else self.copy(item)
            holder = node({'title': 'holder'}, [item, again])
            if is_fault:
                holder.fields['children'] = Instance(MUTABLE_ARRAY, {'NS.object.0': item,
                                                                     'NS.object.1': item})
            return outline([holder])
        self.check_repair(made(True), made(False), ('1.2', 'listed-twice', True))


class Properties(Checking):
    def test_properties_of_wrong_types(self):
        for root, count in (({'documentProperties': 'text'}, 1), ({'documentProperties': [1]}, 1),
                            ({'documentProperties': {'keywords': 'a,b'}}, 1),
                            ({'documentProperties': {'keywords': ['a', 1, None]}}, 2),
                            ({'documentProperties': {'authors': {}, 'organizations': 'x'}}, 2),
                            ({'documentProperties': {'title': 1, 'comment': ['x'],
                                                     'subject': b'x', 'copyright': True}}, 4),
                            ({'documentProperties': {'title': Instance('ZZTitle')}}, 1)):
            with self.subTest(root):
                self.check_left(document(node(root)), *[(None, 'properties')] * count)


class Runs(Checking):
    def text(self, stored, looks=2, text='größe', chain='NSAttributedString', bare=False):
        info = numbers(*stored) if not isinstance(stored, bytes) else stored
        return Instance(chain, {
            'NSString': Value(text), 'ZZOwn': ref([1]),
            'NSAttributes': array([{'ZZLook': n} for n in range(looks)], MUTABLE_ARRAY),
            'NSAttributeInfo': Value(info) if bare else mutable_data(info)})

    def check_runs(self, stored, expected, **more):
        for place in (lambda text: {'title': text}, lambda text: {'list': [1, {'a': text}]},
                      lambda text: {'holder': Instance('ZZHolder', {'held': [text]})}):
            self.check_repair(outline([*items('x'), node(place(self.text(stored, **more)))]),
                              outline([*items('x'), node(place(self.text(expected, **more)))]),
                              ('2', 'runs', True))

    def test_runs_that_end_too_early(self):
        self.check_runs([2, 0, 1, 1], [2, 0, 3, 1])
        self.check_runs([2, 0, 1, 1], [2, 0, 3, 1], bare=True)

    def test_runs_that_end_too_late(self):
        self.check_runs([2, 0, 9, 1, 3, 0], [2, 0, 3, 1])
        self.check_runs([5, 0, 1, 1], [5, 0])
        self.check_runs([2 ** 62, 0, 2 ** 62, 1, 2 ** 62, 1, 2 ** 62, 1], [5, 0])

    def test_runs_that_break_off(self):
        self.check_runs(numbers(2, 0, 3) + b'\x81', [5, 0])
        self.check_runs(numbers(2, 0, 3), [5, 0])
        self.check_runs(numbers(5, 1) + b'\xff', [5, 1])

    def test_no_runs(self):
        self.check_runs([], [5, 0])
        self.check_runs([3, 1], [], text='')

    def test_no_runs_and_no_attributes(self):
        fault = self.text([], looks=0)
        expected = Instance('NSAttributedString', {'NSString': Value('größe'), 'ZZOwn': ref([1]),
                                                   'NSAttributes': {}})
        expected.fields['NSAttributes'] = dictionary({})
        order = ['NSString', 'ZZOwn', 'NSAttributes']
        expected.fields = {key: expected.fields[key] for key in order}
        self.check_repair(outline([node({'title': fault})]), outline([node({'title': expected})]),
                          ('1', 'runs', True))

    def test_lengths_are_utf16_units(self):
        self.check_runs([1, 0, 1, 1], [1, 0, 2, 1], text='a\U0001F33F')

    def test_a_run_list_that_texts_share(self):
        def made(stored, second):
            info = mutable_data(numbers(*stored))
            def text(string, runs):
                return Instance('NSAttributedString', {
                    'NSString': Value(string), 'NSAttributes': array([{'a': 1}]),
                    'NSAttributeInfo': runs})
            return outline([node({'title': text('abc', info)}),
                            node({'title': text('abcd', second or info)})])
        self.check_repair(made([3, 0], None), made([3, 0], mutable_data(numbers(4, 0))),
                          ('2', 'runs', True))

    def test_the_title_is_named(self):
        self.save(outline([node({'note': self.text([1, 0])})]))
        self.assertEqual(self.checked()[1]['findings'][0]['text'],
                         'the runs of "note" cover 1 of 5 units')

    def test_what_is_no_attributed_string(self):
        for change, what in ((('NSString', NIL), 'an attributed string without text'),
                             (('NSAttributes', NIL), 'runs but without attributes'),
                             (('NSAttributes', ref({})), 'are no dictionary'),
                             (('NSAttributes', ref([1])), 'of a run are no dictionary'),
                             (('NSAttributeInfo', ref('x')), 'are no data'),
                             (('NSAttributeInfo', ref(numbers(5, 2))), 'attributes 2 of 2')):
            text = self.text([5, 0])
            text.fields[change[0]] = change[1]
            self.check_left(outline([*items('x'), node({'title': text})]), ('2', 'archive'))
            found = self.checked()[1]['findings'][0]['text']
            self.assertIn(what, found)
            # as the reader says it
            done = self.run_tool('show', self.path)
            self.assertIn(found.encode(), done.stderr)


class Fonts(Checking):
    def rich(self, name, text='text'):
        return attributed(text, {'ZZFirst': 1, 'NSFont': font(name, 13.0, 1044), 'ZZLast': 2})

    def fonts(self, number, archive):
        """The names of the fonts of an attributed string, by run."""
        record = archive.objects[number]
        looks = archive.objects[record['NSAttributes'].data]
        numbers_of = ([each.data for each in looks['NS.objects']] if archive.name_of(
            record['NSAttributes'].data) in archives.ARRAYS else [record['NSAttributes'].data])
        return [archive.objects[archive.target(archive.entries(each)['NSFont'], 'NSName')]
                for each in numbers_of]

    def texts(self):
        archive = Archive(self.read())
        return [self.fonts(number, archive) for number, entry in enumerate(archive.objects)
                if isinstance(entry, dict) and 'NSAttributes' in entry]

    def saved(self, fault):
        """The fonts of a document that was loaded and saved."""
        self.save(fault)
        done = subprocess.run([KEYWORDS_TOOL, '-w', self.path, 'k'], capture_output=True)
        self.assertEqual(done.returncode, 0)
        return self.texts()

    def test_private_fonts_are_replaced_as_loading_does(self):
        shared = dictionary({'NSFont': font('.SFNSText', 11.0)})
        root = node({'documentProperties': properties(['old'])}, [
            node({'title': self.rich('.LucidaGrandeUI'), 'note': attributed('shared', shared)}),
            node({'title': attributed('shared, too', shared)}),
            node({'list': [self.rich('.AppleSystemUIFont', 'größe \U0001F33F')]}),
            node({'title': attributed('one two', (4, shared), (3, {'NSFont': font('Menlo')}))})])
        fault = document(root)
        expected = self.saved(fault)
        self.save(fault)
        status, found = self.checked()
        self.assertEqual([each[:2] for each in self.facts(found)],
                         [('1', 'font'), ('1', 'font'), ('2', 'font'), ('3', 'font'),
                          ('4', 'font')])
        repairable = [each for each in found['findings'] if each['repairable']]
        self.assertEqual(status, 1)
        status, found = self.checked('--repair')
        self.assertEqual(found['repaired'], len(repairable))
        self.assertEqual(self.texts(), expected)
        again = self.checked()
        self.assertEqual(len(again[1]['findings']), 5 - len(repairable))
        self.assertEqual(status, again[0])
        if repairable:
            # one size, one look for texts that shared theirs
            archive = Archive(self.read())
            sizes = sorted(entry['NSSize'] for entry in archive.objects
                           if isinstance(entry, dict) and 'NSSize' in entry)
            self.assertEqual(sizes, [11.0, 12.0, 13.0, 13.0])

    def test_private_fonts_elsewhere_are_not_found(self):
        other = attributed('x', {'NSOriginalFont': font('.LucidaGrandeUI'), 'NSFont': font()})
        unused = Instance('NSAttributedString', {
            'NSString': Value('abc'), 'NSAttributes': array([{}, {'NSFont': font('.SFNS')}]),
            'NSAttributeInfo': mutable_data(numbers(3, 0))})
        self.save(outline([node({'title': other, 'font': font('.SFNS'), 'note': unused, 'x':
                                 Instance('ZZCell', {'contents': self.rich('.SFNS')})})]))
        self.assertEqual(self.checked()[1]['findings'], [])


class Notes(Checking):
    def test_unused_entries(self):
        for extra, count in ((['text'], 1), ([7, [UID(1)], {'$class': UID(99999)}], 3)):
            plist = property_list(archives.controller(placed(KINDS['runs'])))
            plist['$objects'] = plist['$objects'] + extra
            self.check_left(archives.plain(plist), (None, 'unused'), status=0)
            text = self.checked()[1]['findings'][0]['text']
            self.assertTrue(text.startswith('an entry' if count == 1 else '%d entries' % count))

    def test_unknown_versions(self):
        root = node({'documentProperties': properties(['old'])}, [
            node({'title': 'a'}, version=3), node({'title': 'b'}, items('x', version=-1)),
            node({'title': 'c'}, version=Value(700))], version=4)
        self.check_left(document(root), (None, 'version'), ('1', 'version'), ('2.1', 'version'),
                        ('3', 'version'), status=0)

    def test_a_repair_keeps_versions(self):
        def made(parent):
            first, second = items('x'), node({'title': '$null'}, version=9)
            made = [*first, second]
            root = node({'documentProperties': properties(['old'])}, [*made, *ballast()])
            if parent:
                second.fields['parent'] = parent
            return document(root)
        self.check_repair(made(NIL), made(None), ('2', 'version', False), ('2', 'parent-link', True),
                          left=[('2', 'version', False)])


class Malformed(Checking):
    def test_what_cannot_be_opened(self):
        sound = document(node({'title': 'x'}))
        for content, what in ((b'', 'Document contains no data'), (b'x' * 100, None),
                              (sound[:-10], None), (sound[:40] + b'\xff' * 8 + sound[48:], None),
                              (archives.written(NIL), 'Document has something corrupted'),
                              (archives.written(node({})), 'Document contains unacceptable data'),
                              (archives.written(ref('x')), 'Document contains unacceptable data'),
                              (archives.written(Instance('OLTreeController', {'tree': node({})})),
                               'keyed archive: the tree of a tree controller is not an OLTree'),
                              (archives.written(Instance('OLTreeController', {'tree': NIL})),
                               'the document has no items, not even a root'),
                              (document(ref('x')), None),
                              (document(Instance('OLTree')),
                               'keyed archive: the root of an OLTree is not an OLNode')):
            self.check_left(content, (None, 'archive'))
            found = self.checked()[1]['findings'][0]['text']
            if what:
                self.assertEqual(found, what)
            done = self.run_tool('show', self.path)
            self.assertEqual(done.returncode, 2)
            self.assertEqual(done.stderr.decode(), 'tavlin: %s: %s\n' % (self.path, found))

    def test_an_item_in_itself(self):
        """There is no end to such an outline: no copy could mend it."""
        for depth in range(3):
            item = node({'title': 'a'})
            end = item
            for _ in range(depth):
                below = node({'title': 'x'}, parent=end)
                end.fields['children'].fields['NS.objects'].append(below)
                end = below
            end.fields['children'].fields['NS.objects'].append(item)
            content = outline([*items('x'), item, node({'title': 'b'}, version=5)])
            self.check_left(content, ('2' + '.1' * (depth + 1), 'archive'), ('3', 'version'))

    def test_the_root_in_itself(self):
        root = node({'documentProperties': properties(['old'])}, items('a'))
        root.fields['children'].fields['NS.objects'].append(root)
        self.check_left(document(root), ('2', 'archive'))

    def test_items_with_one_list_in_itself(self):
        item = node({'title': 'a'})
        outer = node({'title': 'b'}, [item])
        item.fields['children'] = outer.fields['children']
        self.check_left(outline([outer]), ('1.1', 'archive'))

    def test_an_item_in_itself_outside_of_the_outline(self):
        item = node({'title': 'a'})
        item.fields['children'].fields['NS.objects'].append(item)
        self.check_left(outline([node({'title': 'x', 'see': item})]), (None, 'archive'))

    def test_children_that_are_no_items(self):
        for child in (ref('text'), NIL, Instance('OLTree', {'root': NIL}), ref({'a': 1})):
            item = node({'title': 'a'}, items('x'))
            item.fields['children'].fields['NS.objects'].append(child)
            self.check_left(outline([item]), ('1.2', 'archive'))

    def test_nothing_is_repaired_in_a_malformed_archive(self):
        item, other = node({'title': 'a'}, items('x')), node({'title': 'b'})
        item.fields['children'].fields['NS.objects'].append(ref('text'))
        root = node({'documentProperties': properties(['old'])}, [item, other])
        other.fields['parent'] = NIL
        self.check_left(document(root), ('1.2', 'archive'), ('2', 'parent-link'))


class Command(Checking):
    def fault(self):
        child = node({'title': 'a'})
        root = node({'documentProperties': properties(['old'])}, [*items('x'), child])
        child.fields['parent'] = NIL
        return document(root)

    def test_lines(self):
        self.save(self.fault())
        line = '%s:2: error: the parent link leads to no item' % self.path
        done = self.run_tool('check', self.path)
        self.assertEqual((done.returncode, done.stdout.decode()), (
            1, line + '; --repair sets it by the lists of children [parent-link]\n'))
        done = self.run_tool('check', '--repair', self.path)
        self.assertEqual((done.returncode, done.stdout.decode()),
                         (0, line + '; repaired [parent-link]\n'))
        self.save(document(node({'title': 'x'}, version=7)))
        done = self.run_tool('check', self.path)
        self.assertEqual((done.returncode, done.stdout.decode()), (
            0, '%s: note: the encoding version 7 is not known; --repair leaves it [version]\n'
            % self.path))

    def test_dry_run_and_backup(self):
        content = self.fault()
        self.save(content)
        done = self.run_tool('check', '--repair', '--dry-run', '--backup', self.path)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b'; --repair sets it', done.stdout)
        self.assertEqual(self.read(), content)
        self.assertEqual(self.checked('--repair', '--dry-run')[1]['repaired'], 0)
        self.assertEqual(os.listdir(self.folder), ['document.tavlin'])
        self.assertEqual(self.run_tool('check', '--repair', '--backup', self.path).returncode, 0)
        with open(self.path + '~', 'rb') as stream:
            self.assertEqual(stream.read(), content)
        self.assertNotEqual(self.read(), content)

    def test_nothing_is_written_where_nothing_is_wrong(self):
        self.save(document(placed(KINDS['runs'])))
        os.utime(self.path, (1, 1))
        self.assertEqual(self.checked('--repair', '--backup')[0], 0)
        self.assertEqual(os.stat(self.path).st_mtime, 1)
        self.assertEqual(os.listdir(self.folder), ['document.tavlin'])

    def test_several_documents(self):
        for i in range(20):
            self.save(self.fault() if i % 3 == 0 else document(node({'title': 'x'})),
                      'd%02d.tavlin' % i)
        self.save(b'', 'other.txt')
        expected = [('%s/d%02d.tavlin:2' % (self.folder, i)) for i in range(0, 20, 3)]
        for jobs in ('-j1', '-j4'):
            done = self.run_tool('check', jobs, self.folder)
            self.assertEqual(done.returncode, 1)
            self.assertEqual([line.split(': ')[0] for line in done.stdout.decode().splitlines()],
                             expected)
        missing = os.path.join(self.folder, 'missing')
        done = self.run_tool('check', '--repair', missing, self.folder)
        self.assertEqual(done.returncode, 2)
        self.assertEqual(done.stderr.decode(), 'tavlin: %s: No such file or directory\n' % missing)
        self.assertEqual(done.stdout.count(b'repaired'), 7)
        self.assertEqual(self.run_tool('check', self.folder).returncode, 0)

    def test_standard_input(self):
        done = self.run_tool('check', '-', input=self.fault())
        self.assertEqual((done.returncode, done.stdout[:4]), (1, b'-:2:'))
        done = self.run_tool('check', '--repair', '-', input=self.fault(), cwd=self.folder)
        self.assertEqual(done.returncode, 2)
        self.assertEqual(os.listdir(self.folder), [])


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
