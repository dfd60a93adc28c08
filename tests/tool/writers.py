"""Documents as several programs write them, made from any document without the library.

    written_by('platform', data)        the same graph of objects, in another hand
    HANDS                               the names of all hands
    Table(data)                         a property list's objects as the file holds them

    writers.py HAND FROM TO             does it to a file

The hands differ in everything that a keyed archive leaves to its writer:

    own        this program's: numbered level by level, whatever is equal stored once, containers
               behind what they hold
    platform   an archiver that goes into depth: numbered in the order of first mention, a class
               behind the first of its instances to be complete, one UID for each mention, "$class"
               as first, middle or last key, some equal values two entries or two objects, and an
               entry that nothing refers to
    backwards  the own graph, but numbered from behind: what an object holds comes before it
    plistlib   what Python's plistlib makes of the own graph: keys sorted, one UID for each mention

Ten million objects take a minute: nothing is decoded, and bytes go from one file into the other.
"""
import struct
import sys
from array import array
from collections import deque

from archives import marker, scalar_bytes
from plistlib import UID

LETTERS = {1: 'B', 2: 'H', 4: 'I', 8: 'Q'}
NULL, CLASS = scalar_bytes('$null'), scalar_bytes('$class')
UNUSED = scalar_bytes('nothing refers to this')
NUMBERED = 10   # the entry of a platform archive that nothing refers to, where there are as many


class Source:
    """A property list's file, of which objects are read when they are asked for."""

    def __init__(self, data):
        self.data = data
        size, self.width, self.count, self.top, start = struct.unpack('>6xBBQQQ', data[-32:])
        table = data[start:start + self.count * size]
        if size in LETTERS:
            self.offsets = array(LETTERS[size], table)
            if sys.byteorder == 'little':
                self.offsets.byteswap()
        else:
            self.offsets = [int.from_bytes(table[i:i + size], 'big')
                            for i in range(0, len(table), size)]
        self.keys = {}   # texts of short strings
        fields = self.fields(self.top)
        self.entries = self.references(fields['$objects'])
        self.tops = self.fields(fields['$top'])

    def extent(self, index):
        """The first byte, the count in it or behind it, and where the content begins."""
        data, at = self.data, self.offsets[index]
        first = data[at]
        low = first & 15
        if low != 15 or first < 0x40:
            return first, low, at + 1
        size = 1 << (data[at + 1] & 15)
        return first, int.from_bytes(data[at + 2:at + 2 + size], 'big'), at + 2 + size

    def references(self, index):
        first, count, at = self.extent(index)
        if first >> 4 == 0xD:
            count *= 2
        if self.width in LETTERS:
            return struct.unpack_from('>%d%s' % (count, LETTERS[self.width]), self.data, at)
        return tuple(int.from_bytes(self.data[i:i + self.width], 'big')
                     for i in range(at, at + count * self.width, self.width))

    def fields(self, index):
        """Of a dictionary: references to values by the texts of keys."""
        references = self.references(index)
        half = len(references) // 2
        return {self.key(k): v for k, v in zip(references[:half], references[half:])}

    def key(self, index):
        found = self.keys.get(index)
        if found is None:
            found = self.keys[index] = self.text(index)
        return found

    def text(self, index):
        first, count, at = self.extent(index)
        if first >> 4 == 6:
            return self.data[at:at + 2 * count].decode('utf-16-be', 'surrogatepass')
        return self.data[at:at + count].decode('ascii')

    def kind(self, index):
        return self.data[self.offsets[index]] >> 4

    def uid(self, index):
        at = self.offsets[index]
        return int.from_bytes(self.data[at + 1:at + 2 + (self.data[at] & 15)], 'big')

    def raw(self, index):
        """The bytes of an object; of a container, its own ones."""
        first, count, at = self.extent(index)
        kind = first >> 4
        length = (0 if kind == 0 else 1 << count if kind in (1, 2, 3) else
                  2 * count if kind == 6 else count + 1 if kind == 8 else
                  count * self.width if kind == 0xA else
                  2 * count * self.width if kind == 0xD else count)
        return self.data[self.offsets[index]:at + length]

    def mentioned(self, index, found):
        """Adds the numbers that an object mentions, in order, and answers that of a class."""
        own = None
        references = self.references(index)
        if self.kind(index) == 0xD:
            half = len(references) // 2
            for key, value in zip(references[:half], references[half:]):
                if self.key(key) == '$class' and self.kind(value) == 8:
                    own = self.uid(value)
                else:
                    self.mention(value, found)
        else:
            for value in references:
                self.mention(value, found)
        return own

    def mention(self, index, found):
        kind = self.kind(index)
        if kind == 8:
            found.append(self.uid(index))
        elif kind >= 0xA:
            own = self.mentioned(index, found)
            if own is not None:
                found.append(own)

    def is_record(self, number):
        return self.kind(self.entries[number]) == 0xD


# ----- numbers

class Numbering:
    """Which entries there are, in the order of their numbers, and the number of each.

    An entry is one of the source, its twin (TWIN added) or none of it."""
    TWIN, NEW = 1 << 31, (1 << 32) - 1

    def __init__(self, source):
        self.source = source
        self.order = array('I', [0])
        self.numbers = array('I', bytes(4 * len(source.entries)))
        self.twins = {}

    def number(self, holder, target):
        """What a record, or "$top", as none, calls an entry."""
        return self.numbers[target]

    def assign(self, holder, target):
        """Gives an entry its number when it has none yet, and answers whether it had none."""
        if target == 0 or self.numbers[target] != 0:
            return False
        self.numbers[target] = len(self.order)
        self.order.append(target)
        return True

    def tops(self):
        found = []
        for value in self.source.tops.values():
            self.source.mention(value, found)
        return found

    def by_level(self):
        pending = deque()
        for target in self.tops():
            if self.assign(0, target):
                pending.append(target)
        while pending:
            holder = pending.popleft()
            if not self.source.is_record(holder):
                continue
            found = []
            own = self.source.mentioned(self.source.entries[holder], found)
            for target in found:
                if self.assign(holder, target):
                    pending.append(target)
            if own is not None:
                self.assign(holder, own)
        return self

    def by_depth(self):
        stack = [(0, iter(self.tops()), None)]
        while stack:
            holder, targets, own = stack[-1]
            for target in targets:
                if self.assign(holder, target) and self.source.is_record(target):
                    found = []
                    its_own = self.source.mentioned(self.source.entries[target], found)
                    stack.append((target, iter(found), its_own))
                    break
            else:
                stack.pop()
                if own is not None:
                    self.assign(holder, own)
        return self

    def backwards(self):
        self.by_level()
        count = len(self.order)
        self.order = array('I', [0]) + self.order[:0:-1]
        for at, number in enumerate(self.numbers):
            if number != 0:
                self.numbers[at] = count - number
        return self


class PlatformNumbering(Numbering):
    """Has some scalars be two entries, and one entry nobody's."""

    def is_twin(self, holder, target):
        """Dates are objects of their own, and null is one entry or several, as the source says."""
        if (holder * 7 + target) % 5 != 0 or self.source.kind(self.source.entries[target]) in (3, 0xD):
            return False
        return self.source.raw(self.source.entries[target]) != NULL

    def number(self, holder, target):
        if target in self.twins and self.is_twin(holder, target):
            return self.twins[target]
        return self.numbers[target]

    def assign(self, holder, target):
        if len(self.order) == NUMBERED:
            self.order.append(self.NEW)
        if target != 0 and target not in self.twins and self.is_twin(holder, target):
            self.twins[target] = len(self.order)
            self.order.append(target | self.TWIN)
            return False
        if target in self.twins and self.is_twin(holder, target):
            return False
        return super().assign(holder, target)


# ----- files

class TooMany(Exception):
    """More objects than references of a width can name."""


class Hand:
    """Writes the objects of a source, in its own order and forms.  This one goes depth first, and
    has equal scalars be one object."""
    one_uid_each = True      # for each number; else for each mention
    numbering = Numbering.by_level
    numbering_class = Numbering
    top_keys = ('$version', '$archiver', '$top', '$objects')

    def __init__(self, source, numbers, width):
        self.source, self.numbers, self.width = source, numbers, width
        self.letter = LETTERS[width]
        self.out, self.offsets = bytearray(b'bplist00'), array('Q')
        self.known, self.uids, self.plans = {}, {}, {}
        self.holder = 0

    # Objects; each answers its place in the table.

    def add(self, raw):
        self.offsets.append(len(self.out))
        self.out += raw
        return len(self.offsets) - 1

    def scalar(self, raw):
        found = self.known.get(raw)
        if found is None:
            found = self.known[raw] = self.add(raw)
        return found

    def uid(self, number):
        if self.one_uid_each:
            found = self.uids.get(number)
            if found is None:
                found = self.uids[number] = self.add(uid_bytes(number))
            return found
        return self.add(uid_bytes(number))

    def container(self, kind, count, placed):
        """A container in front of what it holds, which placed() answers."""
        head = marker(kind, count if kind == 0xA0 else count // 2)
        self.offsets.append(len(self.out))
        index = len(self.offsets) - 1
        self.out += head
        at = len(self.out)
        self.out += bytes(count * self.width)
        self.out[at:at + count * self.width] = self.references(placed())
        return index

    def references(self, places):
        try:
            return struct.pack('>%d%s' % (len(places), self.letter), *places)
        except struct.error:
            raise TooMany from None

    def dictionary(self, keys, values):
        return self.container(0xD0, 2 * len(keys), lambda: self.keys_and_values(keys, values))

    def keys_and_values(self, keys, values):
        """Of pairs of a key's bytes and an object of the source, or a function."""
        return [self.scalar(key) for key in keys] + [self.value(value) for value in values]

    def value(self, value):
        return value() if callable(value) else self.place(value)

    def place(self, index):
        source = self.source
        data, at = source.data, source.offsets[index]
        first = data[at]
        kind = first >> 4
        if kind == 8:
            return self.uid(self.numbers.number(
                self.holder, int.from_bytes(data[at + 1:at + 2 + (first & 15)], 'big')))
        if kind < 0xA:
            return self.scalar(source.raw(index))
        references = source.references(index)
        if kind == 0xA:
            return self.container(0xA0, len(references),
                                  lambda: [self.place(each) for each in references])
        half = len(references) // 2
        return self.container(0xD0, len(references), lambda: self.pairs(
            references[:half], references[half:]))

    def pairs(self, keys, values):
        """Those of a dictionary, in the order that this hand gives them.  The places of keys are
        remembered for each list of them."""
        known = self.plans.get((keys, self.manner()))
        if known is None:
            raws = [self.source.raw(key) for key in keys]
            order = self.order(raws)
            known = self.plans[keys, self.manner()] = (
                order, [self.scalar(raws[position]) for position in order])
        place = self.place
        return known[1] + [place(values[position]) for position in known[0]]

    def manner(self):
        """Which of its orders this hand takes for a dictionary."""
        return 0

    def order(self, keys):
        return range(len(keys))

    # Archives.

    def write(self):
        ordered = self.top_pairs()
        self.dictionary([scalar_bytes(key) for key in ordered], list(ordered.values()))
        if len(self.offsets) >= 1 << 8 * self.width:
            raise TooMany
        return self.finished()

    def top_pairs(self):
        return {key: {'$version': lambda: self.scalar(scalar_bytes(100000)),
                      '$archiver': lambda: self.scalar(scalar_bytes('NSKeyedArchiver')),
                      '$top': self.tops, '$objects': self.objects}[key] for key in self.top_keys}

    def tops(self):
        self.holder = 0
        tops = self.source.tops
        keys, values = [scalar_bytes(key) for key in tops], list(tops.values())
        order = self.order(keys)
        return self.dictionary([keys[at] for at in order], [values[at] for at in order])

    def objects(self):
        return self.container(0xA0, len(self.numbers.order), self.entries)

    def entries(self):
        places, limit = array('I'), 1 << 8 * self.width
        for target in self.numbers.order:
            places.append(self.entry(target))
            if len(self.offsets) >= limit:
                raise TooMany
        return places

    def entry(self, target):
        if target == Numbering.NEW:
            return self.scalar(UNUSED)
        self.holder = target & ~Numbering.TWIN
        return self.place(self.source.entries[self.holder])

    def finished(self):
        start = len(self.out)
        width = 1 if start < 1 << 8 else 2 if start < 1 << 16 else 4 if start < 1 << 32 else 8
        table = self.offsets if width == 8 else array(LETTERS[width], self.offsets)
        if sys.byteorder == 'little':
            table.byteswap()
        self.out += table.tobytes()
        self.out += struct.pack('>6xBBQQQ', width, self.width, len(self.offsets), 0, start)
        return bytes(self.out)


class OwnHand(Hand):
    """Containers come behind what they hold, but for the topmost; scalars and classes come where
    they are mentioned first, and classes have their values in front of the keys."""

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self.classes = {}   # by number

    def entry(self, target):
        found = self.classes.get(self.numbers.numbers[target])
        return super().entry(target) if found is None else found

    def place(self, index):
        source = self.source
        if source.kind(index) == 8:
            entry = source.entries[source.uid(index)]
            if source.kind(entry) < 0xA:
                self.scalar(source.raw(entry))
        return super().place(index)

    def placed_class(self, index):
        """The UID of a class, behind the class."""
        source = self.source
        target = source.uid(index)
        number = self.numbers.numbers[target]
        if number not in self.classes:
            references = source.references(source.entries[target])
            half = len(references) // 2
            places = [(self.place(value), self.place(key))
                      for key, value in zip(references[:half], references[half:])]
            self.classes[number] = self.add(marker(0xD0, half) + self.references(
                [key for _, key in places] + [value for value, _ in places]))
        return self.uid(number)

    def container(self, kind, count, placed):
        references = self.references(placed())
        return self.add(marker(kind, count if kind == 0xA0 else count // 2) + references)

    def pairs(self, keys, values):
        source, places = self.source, []
        for key, value in zip(keys, values):
            raw = source.raw(key)
            places.append((self.scalar(raw), self.placed_class(value) if raw == CLASS else
                           self.place(value)))
        return [key for key, _ in places] + [value for _, value in places]

    def write(self):
        self.add(bytes(1 + 8 * self.width))
        names = [self.scalar(scalar_bytes(key)) for key in self.top_keys]
        values = [self.scalar(scalar_bytes(100000)),
                  self.scalar(scalar_bytes('NSKeyedArchiver'))]
        values += [self.tops(), self.objects()]
        self.out[8:8 + 1 + 8 * self.width] = marker(0xD0, 4) + self.references(names + values)
        if len(self.offsets) >= 1 << 8 * self.width:
            raise TooMany
        return self.finished()

    def tops(self):
        self.holder = 0
        tops = self.source.tops
        head = marker(0xD0, len(tops))
        at = len(self.out) + len(head)
        index = self.add(head + bytes(2 * len(tops) * self.width))
        keys = [self.scalar(scalar_bytes(key)) for key in tops]
        self.scalar(NULL)
        values = [self.place(value) for value in tops.values()]
        self.out[at:at + 2 * len(tops) * self.width] = self.references(keys + values)
        return index


class BackwardsHand(Hand):
    numbering = Numbering.backwards


class PlistlibHand(Hand):
    one_uid_each = False
    top_keys = tuple(sorted(Hand.top_keys))

    def order(self, keys):
        return sorted(range(len(keys)), key=lambda at: text_of(keys[at]))


class PlatformHand(Hand):
    one_uid_each = False
    numbering = Numbering.by_depth
    numbering_class = PlatformNumbering
    top_keys = ('$version', '$objects', '$archiver', '$top')

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self.others = {}
        self.turn = 0

    def scalar(self, raw):
        """Of equal numbers there are two, by turns."""
        if raw[0] < 0x40:
            self.turn += 1
            if self.turn % 3 == 0:
                found = self.others.get(raw)
                if found is None:
                    found = self.others[raw] = self.add(raw)
                return found
        return super().scalar(raw)

    def manner(self):
        """The class is the first key of nine records in twenty, a middle one of six, and the last
        of five."""
        side = self.holder * 2654435761 % 4294967296 >> 16
        return 0 if side % 20 < 9 else 1 if side % 20 < 15 else 2

    def order(self, keys):
        order = list(range(len(keys)))
        if CLASS in keys:
            at = keys.index(CLASS)
            del order[at]
            order.insert((0, len(keys) // 2, len(keys))[self.manner()], at)
        return order


HANDS = {'own': OwnHand, 'platform': PlatformHand, 'backwards': BackwardsHand,
         'plistlib': PlistlibHand}


def uid_bytes(number):
    if number < 1 << 8:
        return bytes((0x80, number))
    return struct.pack('>BH', 0x81, number) if number < 1 << 16 else struct.pack('>BI', 0x83, number)


def text_of(raw):
    """The text of a key's bytes."""
    at = 1 if raw[0] & 15 != 15 else 2 + (1 << (raw[1] & 15))
    return raw[at:].decode('ascii' if raw[0] >> 4 == 5 else 'utf-16-be')


def written_by(hand, data):
    """A document of any form, as another program would have written it.  What nothing refers to is
    left out."""
    made = HANDS[hand]
    source = Source(data)
    numbers = made.numbering(made.numbering_class(source))
    for width in (1, 2, 4):
        try:
            return made(source, numbers, width).write()
        except TooMany:
            continue
    raise TooMany


# ----- objects as they are stored

class Table:
    """The objects of a property list one by one, to be compared, and to be put into a file in
    another manner."""

    def __init__(self, data):
        self.source = Source(data)
        self.width = self.source.width

    def stored(self, index):
        """An object's own bytes with those of all that it holds, in order."""
        found, pending = [], [index]
        while pending:
            each = pending.pop()
            found.append(self.source.raw(each))
            if self.source.kind(each) >= 0xA:
                pending += reversed(self.source.references(each))
        return b'|'.join(found)

    def entries(self):
        """What each number stands for, byte for byte."""
        return [self.stored(index) for index in self.source.entries]

    def relaid(self, order=None, table=None, gap=b'', width=None, more=(), header=b'bplist00',
               sizes=None, unused=bytes(6)):
        """A file with the same objects: laid down in an order of places, called by other numbers
        (`table` maps old to new ones), with a gap behind each, references of a width, more objects
        (bytes, for a width) behind all, and offsets of a size."""
        source = self.source
        count = source.count
        order = range(count) if order is None else order
        table = list(range(count)) if table is None else table
        width = width or source.width
        out, offsets = bytearray(header), [0] * (count + len(more))
        for index in order:
            offsets[table[index]] = len(out)
            if source.kind(index) < 0xA:
                out += source.raw(index)
            else:
                references = source.references(index)
                kind = source.kind(index) << 4
                out += marker(kind, len(references) // (2 if kind == 0xD0 else 1))
                out += b''.join(table[each].to_bytes(width, 'big') for each in references)
            out += gap
        for at, raw in enumerate(more):
            offsets[count + at] = len(out)
            out += raw + gap
        start = len(out)
        sizes = sizes or (1 if start < 1 << 8 else 2 if start < 1 << 16 else 4)
        out += b''.join(offset.to_bytes(sizes, 'big') for offset in offsets)
        out += unused + struct.pack('>BBQQQ', sizes, width, len(offsets), table[source.top], start)
        return bytes(out)


if __name__ == '__main__':
    with open(sys.argv[2], 'rb') as stream:
        made = written_by(sys.argv[1], stream.read())
    with open(sys.argv[3], 'wb') as stream:
        stream.write(made)
