"""Documents as several programs write them, made from any document without the library.

    written_by('platform', data)        the same graph of objects, in another hand
    HANDS                               the names of all hands

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

Nothing is decoded, and bytes go from one file into the other: a hundred thousand items take about
ten seconds.
"""
import sys

from archives import marker, scalar_bytes
from hand import Hand, TooMany
from numbering import Numbering, PlatformNumbering
from stored import CLASS, NULL, Source


class OwnHand(Hand):
    """Containers come behind what they hold, but for the topmost; scalars and classes come where
    they are mentioned first."""

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
            keys, values = [], []
            for key, value in zip(references[:half], references[half:]):
                if source.kind(value) >= 0xA:   # lists stand in front of their keys here
                    values.append(self.place(value))
                    keys.append(self.place(key))
                else:
                    keys.append(self.place(key))
                    values.append(self.place(value))
            self.classes[number] = self.add(marker(0xD0, half) + self.references(keys + values))
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


if __name__ == '__main__':
    with open(sys.argv[2], 'rb') as stream:
        made = written_by(sys.argv[1], stream.read())
    with open(sys.argv[3], 'wb') as stream:
        stream.write(made)
