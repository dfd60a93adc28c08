"""The dump from outside: what it prints of archives.

    dump_test.py ARCHIVE-DUMP
"""
import re
import subprocess
import sys
import tempfile
import unittest

from archives import (UID, Conditional, Date, Instance, Single, Value, Wide, array, as_xml, controller,
                      dictionary, mutable_string, node, plain, property_list, ref, written)

DUMP = sys.argv[1]


class Dump(unittest.TestCase):
    def dump(self, content, status=0):
        with tempfile.NamedTemporaryFile() as file:
            file.write(content)
            file.flush()
            done = subprocess.run([DUMP, file.name], capture_output=True, text=True, timeout=120)
        self.assertEqual(done.returncode, status, done)
        self.assertEqual(done.stderr == '', status == 0, done.stderr)
        return done.stdout if status == 0 else done.stderr

    def test_a_document(self):
        first = node({'title': 'One'})
        root = node({'note': mutable_string('a\tb')}, [first])
        expected = """\
$top
  root: #1 OLTreeController : NSObject
    tree: #2 OLTree : NSObject
      root: #4 OLNode : NSObject
        parent: nil
        children: #6 NSMutableArray : NSArray : NSObject
          NS.objects: array of 1
            0: #9 OLNode
              parent: -> #4 OLNode
              children: #13 NSMutableArray
                NS.objects: array of 0
              data: #14 NSMutableDictionary : NSDictionary : NSObject
                NS.keys: array of 1
                  0: #15 "title"
                NS.objects: array of 1
                  0: #16 "One"
              expanded: true
              outlineStyle: false
              encoding_version: 2
        data: #7 NSMutableDictionary
          NS.keys: array of 1
            0: #11 "note"
          NS.objects: array of 1
            0: #12 NSMutableString : NSString : NSObject
              NS.string: "a\\tb"
        expanded: true
        outlineStyle: false
        encoding_version: 2
"""
        content = property_list(controller(root))
        printed = self.dump(plain(content))
        self.assertEqual(self.without_numbers(printed), self.without_numbers(expected))
        # the other form of the file says the same
        self.assertEqual(self.dump(as_xml(content)), printed)

    @staticmethod
    def without_numbers(text):
        """Entries numbered by first mention, so that the test does not depend on how the maker of
        the archive numbers them."""
        seen = {}
        return re.sub(r'#\d+', lambda found: '#%d' % seen.setdefault(found.group(), len(seen)), text)

    def test_every_kind_of_value(self):
        thing = Instance(('ZZThing', '%ZZThing', 'NSProxy'), {
            'true': True, 'byte': 255, 'negative': -2147483392, 'wide': Wide(2 ** 64), 'half': 0.5,
            'single': Single(0.1), 'whole': 1000.0, 'infinite': float('inf'), 'date': Date(1.5),
            'data': bytes(range(30)), 'no data': b'', 'text': 'say "\\\x01\n"', 'größe': 'größe',
            'list': [1, ref('x')], 'map': {'k': [True]}, 'nil': Value(None),
            'gone': Conditional(Instance('ZZGone')), 'number': ref(7), '$0': 'unkeyed'},
            hints=['NSString', 'NSArray'])
        thing.fields['self'] = thing
        thing.fields['bare'] = Instance('ZZBare', {}, has_chain=False)
        expected = """\
$top
  root: #1 ZZThing : %ZZThing : NSProxy (NSString, NSArray)
    true: true
    byte: 255
    negative: -2147483392
    wide: 0x00000000000000010000000000000000
    half: 0.5
    single: 0.1f
    whole: 1000.0
    infinite: inf
    date: date 1.5
    data: <000102030405060708090A0B0C0D0E0F1011121314151617...> 30 bytes
    no data: <> 0 bytes
    text: "say \\"\\\\\\x01\\n\\""
    größe: "größe"
    list: array of 2
      0: 1
      1: #2 "x"
    map: dictionary of 1
      k: array of 1
        0: true
    nil: nil
    gone: nil #3
    number: #4 7
    $0: "unkeyed"
    self: -> #1 ZZThing
    bare: #5 ZZBare : ?
"""
        self.assertEqual(self.dump(written(thing)), expected)

    def test_every_entry_of_the_top(self):
        shared = array([1])
        content = property_list(shared, version=7, again=shared)
        self.assertEqual(self.dump(plain(content)), """\
$top
  root: #1 NSArray : NSObject
    NS.objects: array of 1
      0: #2 1
  version: 7
  again: -> #1 NSArray
""")
        del content['$top']['root']
        self.assertIn('  again: #1 NSArray : NSObject\n', self.dump(plain(content)))

    def test_deep_archives(self):
        value = dictionary({})
        for _ in range(20000):
            value = array([value])
        lines = self.dump(written(value)).splitlines()
        self.assertLess(max(map(len, lines)), 200)
        self.assertEqual(sum('NSArray' in line for line in lines), 20000)
        self.assertTrue(any('(level 40001) 0: ' in line for line in lines))

    def test_errors(self):
        self.assertIn('archive-dump: ', self.dump(b'no archive', status=1))
        self.assertIn('reference to object 9', self.dump(
            plain({'$version': 100000, '$archiver': 'NSKeyedArchiver', '$objects': ['$null'],
                   '$top': {'x': UID(9)}}), status=1))
        for arguments in ([], ['a', 'b'], ['/no/such/file']):
            done = subprocess.run([DUMP, *arguments], capture_output=True, text=True)
            self.assertEqual(done.returncode, 1)
            self.assertTrue(done.stderr)
            self.assertEqual(done.stdout, '')


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
