"""What the hands of all writers have in common: Hand writes the objects of an archive depth first."""
import struct
import sys
from array import array

from archives import marker, scalar_bytes
from numbering import Numbering
from stored import LETTERS

UNUSED = scalar_bytes('nothing refers to this')


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


def uid_bytes(number):
    if number < 1 << 8:
        return bytes((0x80, number))
    return struct.pack('>BH', 0x81, number) if number < 1 << 16 else struct.pack('>BI', 0x83, number)
