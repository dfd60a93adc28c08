"""Keyed archives for tests, made, read and compared without any code of the library.

    Instance, Pairs, Single, Wide, Date    what archives are made of
    written(root), plain(value)            archives and property lists as small as can be
    Archive(data)                          an archive that was read, with exact kinds and widths
    compared(before, after, keywords)      raises Difference

Property lists are held as str, bytes, bool, int (Wide: 16 bytes), float (Single: 4 bytes), Date,
UID, list and dict.
"""
import io
import plistlib
import struct

UID = plistlib.UID


class Single(float):
    """A real of 4 bytes."""


class Wide(int):
    """An integer of 16 bytes."""


class Date(float):
    """A date of the property list, in seconds since 2001."""


class Pairs(list):
    """A dictionary of the property list, as pairs, for those whose keys repeat."""


# ----- property lists

def scalar_bytes(value):
    """A scalar as the file holds it: its shortest form."""
    if value is True or value is False:
        return b'\x09' if value else b'\x08'
    if isinstance(value, Wide):
        return b'\x14' + (value & (1 << 128) - 1).to_bytes(16, 'big')
    if isinstance(value, int):
        if value >= 1 << 63:
            return b'\x14' + value.to_bytes(16, 'big')
        if value < 0 or value >= 1 << 32:
            return b'\x13' + value.to_bytes(8, 'big', signed=True)
        power = 0 if value < 1 << 8 else 1 if value < 1 << 16 else 2
        return bytes([0x10 + power]) + value.to_bytes(1 << power, 'big')
    if isinstance(value, Date):
        return b'\x33' + struct.pack('>d', value)
    if isinstance(value, Single):
        return b'\x22' + struct.pack('>f', value)
    if isinstance(value, float):
        return b'\x23' + struct.pack('>d', value)
    if isinstance(value, bytes):
        return marker(0x40, len(value)) + value
    if isinstance(value, str):
        if all(ord(c) < 128 for c in value):
            return marker(0x50, len(value)) + value.encode('ascii')
        units = value.encode('utf-16-be', 'surrogatepass')
        return marker(0x60, len(units) // 2) + units
    if isinstance(value, UID):
        width = max(1, (value.data.bit_length() + 7) // 8)
        width = 4 if width == 3 else width
        return bytes([0x80 + width - 1]) + value.data.to_bytes(width, 'big')
    raise TypeError(type(value))


def marker(kind, count):
    return bytes([kind + count]) if count < 15 else bytes([kind + 15]) + scalar_bytes(count)


def plain(top):
    """A binary property list in which equal scalars are one object.  A container mentioned in
    several places is one object as well."""
    table, places, containers, kept = [], {}, {}, []

    def place(value):
        if isinstance(value, (list, dict)):
            if id(value) in containers:
                return containers[id(value)]
            index = containers[id(value)] = len(table)
            kept.append(value)
            table.append(None)
            if isinstance(value, Pairs) or isinstance(value, dict):
                pairs = list(value if isinstance(value, Pairs) else value.items())
                references = [place(k) for k, _ in pairs] + [place(v) for _, v in pairs]
                table[index] = (0xD0, len(pairs), references)
            else:
                table[index] = (0xA0, len(value), [place(each) for each in value])
            return index
        content = scalar_bytes(value)
        if content not in places:
            places[content] = len(table)
            table.append(content)
        return places[content]

    top_index = place(top)
    width = 1 if len(table) < 1 << 8 else 2 if len(table) < 1 << 16 else 4
    out = io.BytesIO()
    out.write(b'bplist00')
    offsets = []
    for each in table:
        offsets.append(out.tell())
        if isinstance(each, tuple):
            kind, count, references = each
            out.write(marker(kind, count))
            out.write(b''.join(index.to_bytes(width, 'big') for index in references))
        else:
            out.write(each)
    start = out.tell()
    offset_width = 1 if start < 1 << 8 else 2 if start < 1 << 16 else 4
    out.write(b''.join(offset.to_bytes(offset_width, 'big') for offset in offsets))
    out.write(struct.pack('>6xBBQQQ', offset_width, width, len(table), top_index, start))
    return out.getvalue()


def parsed(data):
    """The value of a binary property list, with exact kinds; one object of the file is one here."""
    assert data[:8] == b'bplist00', data[:8]
    offset_width, width, count, top, start = struct.unpack('>6xBBQQQ', data[-32:])
    number = int.from_bytes
    offsets = [number(data[start + i * offset_width:start + (i + 1) * offset_width], 'big')
               for i in range(count)]
    made = {}

    def extent(at):
        low = data[at] & 15
        if low < 15:
            return at + 1, low
        size = 1 << (data[at + 1] & 15)
        return at + 2 + size, number(data[at + 2:at + 2 + size], 'big')

    def references(at, length):
        return [number(data[at + i * width:at + (i + 1) * width], 'big') for i in range(length)]

    def read(index):
        if index in made:
            return made[index]
        at = offsets[index]
        kind, low = data[at] >> 4, data[at] & 15
        if data[at] in (8, 9):
            value = data[at] == 9
        elif kind == 1:
            value = number(data[at + 1:at + 1 + (1 << low)], 'big', signed=low == 3)
            value = Wide(value) if low == 4 else value
        elif data[at] == 0x22:
            value = Single(struct.unpack('>f', data[at + 1:at + 5])[0])
        elif data[at] == 0x23:
            value = struct.unpack('>d', data[at + 1:at + 9])[0]
        elif data[at] == 0x33:
            value = Date(struct.unpack('>d', data[at + 1:at + 9])[0])
        elif kind == 4:
            at, length = extent(at)
            value = data[at:at + length]
        elif kind == 5:
            at, length = extent(at)
            value = data[at:at + length].decode('ascii')
        elif kind == 6:
            at, length = extent(at)
            value = data[at:at + 2 * length].decode('utf-16-be', 'surrogatepass')
        elif kind == 8:
            value = UID(number(data[at + 1:at + 2 + low], 'big'))
        elif kind == 10:
            at, length = extent(at)
            value = made[index] = []
            value.extend(read(i) for i in references(at, length))
        elif kind == 13:
            at, length = extent(at)
            value = made[index] = {}
            found = references(at, 2 * length)
            for key, each in zip(found[:length], found[length:]):
                value[read(key)] = read(each)
            assert len(value) == length, 'a key occurs twice'
        else:
            raise ValueError('marker 0x%02x' % data[at])
        made[index] = value
        return value

    return read(top)


def flaws(data):
    """What a careful writer would have done otherwise in a binary property list."""
    offset_width, width, count, top, start = struct.unpack('>6xBBQQQ', data[-32:])
    if data[:8] != b'bplist00' or data[-32:-26] != bytes(6) or top != 0:
        yield 'header, unused bytes or top'
    if start + count * offset_width + 32 != len(data):
        yield 'the offset table does not end the file'
    if width not in (1, 2, 4, 8) or count >> (8 * width) or (width > 1 and not count >> 4 * width):
        yield 'references of %d bytes for %d objects' % (width, count)
    if offset_width not in (1, 2, 4, 8) or start >> (8 * offset_width) or (
            offset_width > 1 and not start >> 4 * offset_width):
        yield 'offsets of %d bytes for a table at %d' % (offset_width, start)
    ends = [int.from_bytes(data[start + i * offset_width:start + (i + 1) * offset_width], 'big')
            for i in range(count)] + [start]
    if ends[0] != 8 or any(one >= other for one, other in zip(ends, ends[1:])):
        yield 'gaps, or offsets that do not ascend'
    known = set()
    for at, end in zip(ends, ends[1:]):
        content = data[at:end]
        kind, low = content[0] >> 4, content[0] & 15
        length, behind = low, 1
        if kind in (4, 5, 6, 10, 13) and low == 15:
            size = 1 << (content[1] & 15)
            length, behind = int.from_bytes(content[2:2 + size], 'big'), 2 + size
            if length < 15 or content[1:behind] != scalar_bytes(length):
                yield 'a count of %d at %d' % (length, at)
        unit = {4: 1, 5: 1, 6: 2, 10: width, 13: 2 * width}.get(kind)
        if unit and behind + length * unit != len(content):
            yield 'an object of another length at %d' % at
        if kind == 6 and content[behind::2].count(0) == length and max(content[behind + 1::2]) < 128:
            yield 'ASCII text in the wide form at %d' % at
        if kind == 1:
            number = int.from_bytes(content[1:], 'big', signed=low == 3)
            if low != 4 and content != scalar_bytes(number):
                yield 'an integer of %d bytes at %d' % (1 << low, at)
        if kind == 8 and content != scalar_bytes(UID(int.from_bytes(content[1:], 'big'))):
            yield 'a reference of %d bytes at %d' % (low + 1, at)
        if kind not in (10, 13):
            if content in known:
                yield 'a scalar that is there already at %d' % at
            known.add(content)


def exact(value):
    """What two equal scalars have in common: kind, width and content."""
    return scalar_bytes(value)


# ----- making archives

class Instance:
    """An object of a class; `fields` maps keys to property lists, in which an Instance, or Value,
    stands for a reference to it."""

    def __init__(self, chain, fields=None, hints=None, has_chain=True):
        self.chain = [chain] if isinstance(chain, str) else list(chain)
        if isinstance(chain, str):
            self.chain.append('NSObject')
        self.hints, self.has_chain = hints, has_chain
        self.fields = dict(fields or {})

    def class_key(self):
        return (tuple(self.chain), None if self.hints is None else tuple(self.hints), self.has_chain)

    def class_record(self):
        record = {'$classname': self.chain[0]}
        if self.has_chain:
            record['$classes'] = list(self.chain)
        if self.hints is not None:
            record['$classhints'] = list(self.hints)
        return record


class Value:
    """A reference to a scalar that is an entry of its own; none for null."""

    def __init__(self, value):
        self.value = value


NIL = Value(None)


class Conditional:
    """A reference that is null unless its object is referred to otherwise."""

    def __init__(self, instance):
        self.instance = instance


def entries_of(tops):
    """The entries of an archive and the values of "$top" for a dictionary of them."""
    entries, numbers, scalars, classes, pending, kept = ['$null'], {}, {}, {}, [], []

    def new(entry):
        entries.append(entry)
        return len(entries) - 1

    def reference(value):
        if isinstance(value, Conditional):
            return UID(conditional(value.instance))
        if isinstance(value, Value):
            if value.value is None:
                return UID(0)
            key = exact(value.value)
            if key not in scalars:
                scalars[key] = new(value.value)
            return UID(scalars[key])
        found = numbers.get(id(value))
        if found is None or not found[1]:
            number = found[0] if found else new('$null')
            numbers[id(value)] = (number, True)
            kept.append(value)
            pending.append((number, value))
        return UID(numbers[id(value)][0])

    def conditional(instance):
        if id(instance) not in numbers:
            kept.append(instance)
            numbers[id(instance)] = (new('$null'), False)
        return numbers[id(instance)][0]

    def field(value):
        if isinstance(value, (Instance, Value, Conditional)):
            return reference(value)
        if isinstance(value, list):
            return [field(each) for each in value]
        if isinstance(value, dict):
            return {key: field(each) for key, each in value.items()}
        return value

    top = {key: field(value) for key, value in tops.items()}
    while pending:
        number, instance = pending.pop(0)
        record = {key: field(value) for key, value in instance.fields.items()}
        key = instance.class_key()
        if key not in classes:
            classes[key] = new(instance.class_record())
        record['$class'] = UID(classes[key])
        entries[number] = record
    return entries, top


def property_list(root, **more):
    """An archive of a root object as a property list; `more` stands beside "root" in "$top"."""
    entries, top = entries_of({'root': root, **more})
    return {'$version': 100000, '$archiver': 'NSKeyedArchiver', '$top': top, '$objects': entries}


def written(root, **more):
    return plain(property_list(root, **more))


def as_xml(value):
    """The XML form, which has no references: they are dictionaries of one entry."""
    def converted(each):
        if isinstance(each, UID):
            return {'CF$UID': each.data}
        if isinstance(each, dict):
            return {key: converted(inner) for key, inner in each.items()}
        if isinstance(each, list):
            return [converted(inner) for inner in each]
        if isinstance(each, Single):
            return float(each)
        return each
    return plistlib.dumps(converted(value), fmt=plistlib.FMT_XML, sort_keys=False)


# ----- values as programs hold them

def ref(value):
    """A reference to any value: Python's own ones become the usual objects."""
    if isinstance(value, (Instance, Value, Conditional)):
        return value
    if value is None:
        return NIL
    if isinstance(value, list):
        return array(value)
    if isinstance(value, dict):
        return dictionary(value)
    return Value(value)


MUTABLE_STRING = ('NSMutableString', 'NSString', 'NSObject')
MUTABLE_DATA = ('NSMutableData', 'NSData', 'NSObject')
MUTABLE_ARRAY = ('NSMutableArray', 'NSArray', 'NSObject')
MUTABLE_DICTIONARY = ('NSMutableDictionary', 'NSDictionary', 'NSObject')


def array(values, chain='NSArray'):
    return Instance(chain, {'NS.objects': [ref(each) for each in values]})


def dictionary(values, chain='NSDictionary'):
    pairs = list(values.items()) if isinstance(values, dict) else values
    return Instance(chain, {'NS.keys': [ref(key) for key, _ in pairs],
                            'NS.objects': [ref(each) for _, each in pairs]})


def mutable_string(text):
    return Instance(MUTABLE_STRING, {'NS.string': text})


def mutable_data(content):
    return Instance(MUTABLE_DATA, {'NS.data': content})


def numbers(*values):
    """Numbers one after the other, each in base 128 with its low bits first."""
    out = bytearray()
    for value in values:
        while value >= 128:
            out.append(value & 127 | 128)
            value >>= 7
        out.append(value)
    return bytes(out)


def attributed(text, *runs, chain='NSAttributedString', **more):
    """Text with attributes: nothing, one dictionary, or (length, attributes) pairs."""
    fields = {'NSString': text if isinstance(text, Instance) else Value(text)}
    if len(runs) == 1:
        fields['NSAttributes'] = ref(runs[0])
    elif runs:
        used, stored = [], []
        for length, attributes in runs:
            attributes = ref(attributes)
            if not any(each is attributes for each in used):
                used.append(attributes)
            stored += [length, next(i for i, each in enumerate(used) if each is attributes)]
        fields['NSAttributes'] = array(used, MUTABLE_ARRAY)
        fields['NSAttributeInfo'] = mutable_data(numbers(*stored))
    fields.update(more)
    return Instance(chain, fields)


def node(data, children=(), parent=None, version=2, **fields):
    """An item; its children get their parent links."""
    made = Instance('OLNode')
    kept = [child for child in children]
    made.fields = {
        'parent': Conditional(parent) if parent else NIL,
        'children': array(kept, MUTABLE_ARRAY),
        'data': data if isinstance(data, Instance) else dictionary(data, MUTABLE_DICTIONARY),
        'expanded': True, 'outlineStyle': False}
    if version is not None:
        made.fields['encoding_version'] = version
    made.fields.update(fields)
    for child in kept:
        child.fields['parent'] = Conditional(made)
    return made


def controller(root):
    return Instance('OLTreeController', {'tree': Instance('OLTree', {'root': root})})


def document(root, **more):
    return written(controller(root), **more)


# ----- reading and comparing

class Archive:
    def __init__(self, data):
        if data[:6] == b'bplist':
            self.list = parsed(data)
            try:
                plistlib.loads(data)  # that reader must be able to, too
            except plistlib.InvalidFileException as refusal:
                # unpaired surrogates are the one thing that it does not take
                if not isinstance(refusal.__context__, UnicodeDecodeError):
                    raise
        else:
            self.list = self.from_xml(plistlib.loads(data))
        assert self.list['$archiver'] == 'NSKeyedArchiver'
        assert self.list['$version'] == 100000
        self.top, self.objects = self.list['$top'], self.list['$objects']
        assert self.objects[0] == '$null'

    @classmethod
    def from_xml(cls, value):
        if isinstance(value, dict):
            if list(value) == ['CF$UID']:
                return UID(value['CF$UID'])
            return {key: cls.from_xml(each) for key, each in value.items()}
        return [cls.from_xml(each) for each in value] if isinstance(value, list) else value

    def class_of(self, number):
        """Name, chain and hints of an instance's class; none for any other entry."""
        entry = self.objects[number]
        if not isinstance(entry, dict):
            return None
        record = self.objects[entry['$class'].data]
        return (record['$classname'], record.get('$classes'), record.get('$classhints'))

    def name_of(self, number):
        found = self.class_of(number)
        return found and found[0]

    def target(self, number, key):
        return self.objects[number][key].data

    def root(self):
        return self.target(self.target(self.top['root'].data, 'tree'), 'root')

    def entries(self, number):
        """A dictionary of scalars to numbers."""
        record = self.objects[number]
        return {self.objects[k.data]: v.data
                for k, v in zip(record['NS.keys'], record['NS.objects'])}

    def keywords(self):
        data = self.entries(self.target(self.root(), 'data'))
        properties = self.entries(data['documentProperties'])
        return [self.objects[each.data]
                for each in self.objects[properties['keywords']]['NS.objects']]

    def count(self, name):
        """How many instances of a class there are."""
        return sum(isinstance(self.objects[i], dict) and '$class' in self.objects[i] and
                   self.name_of(i) == name for i in range(len(self.objects)))


def grafted(plist, placeholder, objects, target):
    """An archive in which an entry of another one, with everything that it refers to, stands in the
    place of every instance of a class."""
    entries = list(plist['$objects'])
    shift = len(entries)

    def shifted(value):
        if isinstance(value, UID):
            return UID(value.data and value.data + shift - 1)
        if isinstance(value, dict):
            return {key: shifted(each) for key, each in value.items()}
        return [shifted(each) for each in value] if isinstance(value, list) else value

    def is_placeholder(entry):
        return (isinstance(entry, dict) and '$class' in entry and
                plist['$objects'][entry['$class'].data]['$classname'] == placeholder)
    places = {i for i, entry in enumerate(entries) if is_placeholder(entry)}

    def replaced(value):
        if isinstance(value, UID):
            return shifted(target) if value.data in places else value
        if isinstance(value, dict):
            return {key: replaced(each) for key, each in value.items()}
        return [replaced(each) for each in value] if isinstance(value, list) else value
    return {**plist, '$objects': [replaced(entry) for entry in entries] +
            [shifted(entry) for entry in objects[1:]]}


def archive_flaws(data):
    """What the format's own writer would not have written in an archive."""
    yield from flaws(data)
    archive = Archive(data)
    objects = archive.objects
    if list(archive.list) != ['$version', '$archiver', '$top', '$objects']:
        yield 'a top of %r' % list(archive.list)
    if 'root' in archive.top and archive.top['root'].data not in (0, 1):
        yield 'the root is entry %d' % archive.top['root'].data
    seen, first, classes, scalars = set(), {}, {}, set()
    pending = list(archive.top.values())
    while pending:
        value = pending.pop()
        if isinstance(value, (dict, list)):
            pending.extend(value.values() if isinstance(value, dict) else value)
        elif isinstance(value, UID) and value.data not in seen:
            seen.add(value.data)
            pending.append(objects[value.data])
    for number, entry in enumerate(objects):
        if number and number not in seen:
            yield 'entry %d, to which nothing refers' % number
        if isinstance(entry, dict):
            if '$class' in entry:
                first.setdefault(entry['$class'].data, number)
            else:
                if first.get(number, number) >= number:
                    yield 'a class record, %d, before its first instance' % number
                if repr(entry) in classes:
                    yield 'two records of the class %s' % entry['$classname']
                classes[repr(entry)] = number
        elif entry != '$null':
            if exact(entry) in scalars:
                yield 'two entries of %r' % entry
            scalars.add(exact(entry))


class Difference(Exception):
    pass


ARRAYS = ('NSArray', 'NSMutableArray')
DICTIONARIES = ('NSDictionary', 'NSMutableDictionary')
STRINGS = ('NSString', 'NSMutableString')


def repaired(text, is_escaped):
    """A text of item data as it is stored again."""
    if is_escaped:
        text = text.replace('\\$null', '$null')
    return text.replace('$null', '\\$null')


class Comparison:
    """Walks two archives from their tops, entry by entry, with a map of entry numbers.

    Repairs are expected: text in item data, as far as dictionaries and arrays reach, is escaped;
    every item says version 2; the keywords are replaced.  Whatever else differs is a difference:
    classes, keys and their order, kinds and widths, which entries are one.
    """

    def __init__(self, before, after, keywords):
        self.before, self.after, self.keywords = before, after, keywords
        self.there, self.back, self.pending = {}, {}, []
        self.changes = {False: self.changed(False), True: self.changed(True)}
        self.replaced = self.edited = None
        if keywords is not None:
            data = before.entries(before.target(before.root(), 'data'))
            self.edited = data['documentProperties']
            self.replaced = before.entries(self.edited).get('keywords')

    def changed(self, is_escaped):
        """The entries of the first archive that a repair changes."""
        found, holders = set(), {}
        for number, entry in enumerate(self.before.objects):
            if number == 0 or entry == '$null':
                continue
            text = entry
            if isinstance(entry, dict) and '$class' in entry:
                name = self.before.name_of(number)
                text = entry.get('NS.string') if name in STRINGS else None
                if name in ARRAYS + DICTIONARIES:
                    for held in self.held(entry):
                        holders.setdefault(held, []).append(number)
            if isinstance(text, str) and repaired(text, is_escaped) != text:
                found.add(number)
        pending = list(found)
        while pending:
            for holder in holders.get(pending.pop(), ()):
                if holder not in found:
                    found.add(holder)
                    pending.append(holder)
        return found

    @staticmethod
    def held(entry):
        """What a dictionary or array holds: the values of its list, or its numbered ones."""
        if 'NS.objects' in entry:
            return [each.data for each in entry['NS.objects']]
        return [each.data for key, each in entry.items() if key.startswith('NS.object.')]

    def fail(self, way, what):
        raise Difference('%s: %s' % (' '.join(way), what))

    def run(self):
        # the root comes first; the others keep their order
        order = sorted(self.before.top, key=lambda key: key != 'root')
        if order != list(self.after.top):
            raise Difference('"$top" %r became %r' % (list(self.before.top), list(self.after.top)))
        for key, value in self.before.top.items():
            self.field([key], value, self.after.top[key], None)
        while self.pending:
            way, one, other, zone = self.pending.pop()
            self.record(way, one, other, zone)

    def field(self, way, one, other, zone):
        if type(one) is not type(other):
            self.fail(way, '%r became %r' % (one, other))
        if isinstance(one, UID):
            return self.reference(way, one.data, other.data, zone)
        if isinstance(one, list):
            if len(one) != len(other):
                self.fail(way, '%d elements became %d' % (len(one), len(other)))
            for i, (mine, theirs) in enumerate(zip(one, other)):
                self.field(way + [str(i)], mine, theirs, zone)
        elif isinstance(one, dict):
            if list(one) != list(other):
                self.fail(way, 'keys %r became %r' % (list(one), list(other)))
            for key in one:
                self.field(way + [key], one[key], other[key], zone)
        elif exact(one) != exact(other):
            self.fail(way, '%r became %r' % (one, other))

    def reference(self, way, one, other, zone):
        if (one == 0) != (other == 0):
            self.fail(way, 'entry %d became entry %d' % (one, other))
        if one == 0:
            return
        if zone is not None and one not in self.changes[zone]:
            zone = None
        mine, theirs = self.before.objects[one], self.after.objects[other]
        if mine != '$null' and not isinstance(mine, dict):
            expected = repaired(mine, zone) if zone is not None else mine
            if type(expected) is not type(theirs) or exact(expected) != exact(theirs):
                self.fail(way, '%r became %r' % (mine, theirs))
            return
        known = self.there.setdefault((one, zone), other)
        if known != other:
            self.fail(way, 'entry %d became two, %d and %d' % (one, known, other))
        first = self.back.setdefault(other, (one, zone))
        if first != (one, zone):
            self.fail(way, 'entries %d and %d became one' % (first[0], one))
        if known == other and (one, zone) not in self.seen:
            self.seen.add((one, zone))
            self.pending.append((way, one, other, zone))

    seen = property(lambda self: self.__dict__.setdefault('_seen', set()))

    def record(self, way, one, other, zone):
        mine, theirs = self.before.objects[one], self.after.objects[other]
        if mine == '$null' or theirs == '$null':
            if mine != theirs:
                self.fail(way, '%r became %r' % (mine, theirs))
            return
        if not isinstance(theirs, dict):
            self.fail(way, 'an instance became %r' % theirs)
        classes = self.before.class_of(one), self.after.class_of(other)
        if classes[0] != classes[1]:
            self.fail(way, 'class %r became %r' % classes)
        name = classes[0][0]
        way = way + ['(%s)' % name]
        if name == 'OLNode':
            return self.node(way, mine, theirs)
        if name in ARRAYS + DICTIONARIES:
            if one == self.edited:
                return self.properties(way, mine, theirs, zone)
            inner = zone
        else:
            inner = None
        # the class was compared already, and where "$class" stands says nothing
        keys = [key for key in mine if key != '$class']
        if keys != [key for key in theirs if key != '$class']:
            self.fail(way, 'keys %r became %r' % (list(mine), list(theirs)))
        for key in keys:
            if key == 'NS.string' and name in STRINGS and zone is not None:
                if repaired(mine[key], zone) != theirs[key]:
                    self.fail(way, '%r became %r' % (mine[key], theirs[key]))
                continue
            # keys are never changed
            is_key = name in DICTIONARIES and (key == 'NS.keys' or key.startswith('NS.key.'))
            self.field(way + [key], mine[key], theirs[key], None if is_key else inner)

    def node(self, way, mine, theirs):
        version = mine.get('encoding_version', 0)
        if isinstance(version, UID):
            version = self.before.objects[version.data]
            version = 0 if version == '$null' else version
        if theirs['encoding_version'] != 2:
            self.fail(way, 'version %r' % theirs['encoding_version'])
        known = ('parent', 'children', 'data', 'expanded', 'outlineStyle')
        if sorted(theirs) != sorted(known + ('encoding_version', '$class')):
            self.fail(way, 'keys %r' % list(theirs))
        for key in known[:3]:
            self.field(way + [key], mine.get(key, UID(0)), theirs[key],
                       version >= 2 if key == 'data' else None)
        for key in known[3:]:
            flag = mine.get(key, False)
            if isinstance(flag, UID):
                flag = self.before.objects[flag.data]
            if bool(flag) is not theirs[key]:
                self.fail(way, '%s %r became %r' % (key, flag, theirs[key]))

    def properties(self, way, mine, theirs, zone):
        """The dictionary that holds the keywords."""
        ours = list(zip(mine['NS.keys'], mine['NS.objects']))
        others = list(zip(theirs['NS.keys'], theirs['NS.objects']))
        if self.replaced is None:
            key, value = others.pop()
            if self.after.objects[key.data] != 'keywords':
                self.fail(way, 'no keywords')
        for (key, value), (their_key, their_value) in zip(ours, others):
            self.reference(way + ['key'], key.data, their_key.data, None)
            name = self.before.objects[key.data]
            if not isinstance(name, str) or name != 'keywords':
                self.reference(way + [repr(name)], value.data, their_value.data, zone)
        if len(ours) != len(others):
            self.fail(way, '%d entries became %d' % (len(ours), len(others)))
        if self.after.keywords() != [repaired(each, False) for each in self.keywords]:
            self.fail(way, 'keywords %r' % self.after.keywords())


def compared(before, after, keywords=None):
    """Raises Difference unless the second archive is the first with the keywords replaced."""
    Comparison(Archive(before), Archive(after), keywords).run()
