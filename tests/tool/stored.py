"""Property lists as their files hold them: objects by places of a table, read one by one.

    Source(data)    a keyed archive, of which nothing is decoded that is not asked for
    Table(data)     its objects byte for byte, to be compared, or laid down in another manner
"""
import struct
import sys
from array import array

from archives import marker, scalar_bytes

LETTERS = {1: 'B', 2: 'H', 4: 'I', 8: 'Q'}
NULL, CLASS = scalar_bytes('$null'), scalar_bytes('$class')


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
