"""Documents that differ in what a careful reader may not rely on.

    VARIANTS          by name, functions from a property list to one with other objects: unknown keys,
                      values in place, numbers of other kinds
    LAYOUTS           by name, functions from a file to one with the same objects in other places
    outline(count)    a document of so many items, as an outliner makes them
"""
import copy
import random
import struct

from archives import (Conditional, UID, Single, Wide, attributed, controller, dictionary, mutable_string,
                      node, property_list, scalar_bytes)
from kinds import font, properties
from stored import LETTERS, Source, Table


def outline(count=200, keywords=('old', 'older, and long'), version=2, **more):
    """Items in three levels, a third of them with rich text in shared fonts, a third with notes;
    nothing in it is changed by loading and saving."""
    looks = [dictionary({'NSFont': font('Helvetica', size)}) for size in (11.0, 13.0, 18.0)]
    dice = random.Random(count)
    items = []
    for number in range(count):
        text = '%s %d' % (' '.join(dice.choices(('garden', 'plan', 'naïve', '日本', 'a'), k=4)), number)
        data = {'title': text if number % 3 else attributed(text, dice.choice(looks))}
        if number % 3 == 1:
            data['note'] = mutable_string('note ' * dice.randrange(30)) if number % 2 else 'n' * number
        data['checkStatus'] = number % 2 == 0
        items.append((data, number))
    made = [node(data, version=version) for data, _ in items]
    for number in range(count - 1, 0, -1):
        above = number // 4 if number % 4 else None
        if above is not None and above != number:
            adopt(made[above], made[number])
    tops = [each for number, each in enumerate(made) if number % 4 == 0 or number // 4 == number]
    settings = {'documentProperties': properties(list(keywords)) if keywords is not None else
                dictionary({'title': 'Title'}), 'windowFrame': '{{0, 0}, {1, 1}}'}
    return property_list(controller(node(settings, tops, version=version)), **more)


def adopt(parent, child):
    parent.fields['children'].fields['NS.objects'].insert(0, child)
    child.fields['parent'] = Conditional(parent)


def records(plist, *names):
    """The records of classes."""
    entries = plist['$objects']
    for entry in entries:
        if isinstance(entry, dict) and '$class' in entry and \
                entries[entry['$class'].data]['$classname'] in names:
            yield entry


def class_records(plist):
    return [each for each in plist['$objects'] if isinstance(each, dict) and '$classname' in each]


def array_class(plist):
    return next(each for each in records(plist, 'NSArray', 'NSMutableArray'))['$class']


def added(plist, entry):
    plist['$objects'].append(entry)
    return UID(len(plist['$objects']) - 1)


# ----- other objects

def unknown_keys(*names):
    """Keys that this program does not know in records of classes: in place, references, lists."""
    def changed(plist):
        text = added(plist, 'kept by all')
        list_ = added(plist, {'NS.objects': [text, text], '$class': array_class(plist)})
        for number, entry in enumerate(list(records(plist, *names))):
            if number % 3 != 2:
                entry['ZZFuture'] = number % 2 == 0
                entry['ZZText'] = text
                entry['ZZInside'] = {'a': [text, list_, 1.5], 'b': b'data'}
        return plist
    return changed


def unknown_class_keys(plist):
    for entry in class_records(plist):
        entry['ZZVersion'] = 7
        entry['ZZMore'] = ['of', 'this']
    return plist


def twin_classes(plist):
    """Two records of each class, of which one holds more."""
    twins = {}
    for number, entry in enumerate([each for each in plist['$objects'] if isinstance(each, dict) and
                                    '$class' in each]):
        own = entry['$class'].data
        if own not in twins:
            twins[own] = added(plist, {**plist['$objects'][own], 'ZZVersion': 7})
        if number % 2 == 0:
            entry['$class'] = twins[own]
    return plist


def hints(plist):
    for entry in class_records(plist):
        entry['$classhints'] = ['ZZSubstitute', 'NSObject']
    return plist


def in_the_top(plist):
    text = added(plist, 'named by the top')
    plist['$top'] = {'ZZFirst': 'text', 'root': plist['$top']['root'], 'version': 7, 'flag': True,
                     'single': Single(0.5), 'wide': Wide(5), 'list': [1, text], 'again': text}
    return plist


def version(make):
    """All items have a version that make() answers, given the property list and a count."""
    def changed(plist):
        for number, entry in enumerate(list(records(plist, 'OLNode'))):
            entry['encoding_version'] = make(plist, number)
        return plist
    return changed


def mixed_versions(plist, number):
    return [2, 2.0, Single(2), added(plist, 2), Wide(2)][number % 5]


def old_forms(plist):
    """Dictionaries, and the list of keywords, with a key for each element."""
    for entry in records(plist, 'NSArray', 'NSDictionary', 'NSMutableDictionary'):
        for name, one in (('NS.keys', 'NS.key.%d'), ('NS.objects', 'NS.object.%d')):
            if name in entry:
                entry.update({one % i: each for i, each in enumerate(entry.pop(name))})
    return plist


def conditional_nulls(plist):
    for number, entry in enumerate(list(records(plist, 'NSFont', 'NSMutableString'))):
        entry['ZZDelegate'] = added(plist, '$null')
    return plist


def unused_entries(plist):
    plist['$objects'] += ['unused', {'unused': [UID(1)]}, ['unused', UID(2)], '$null']
    return plist


OWN = ('OLNode', 'OLTree', 'OLTreeController')
CONTAINERS = ('NSArray', 'NSMutableArray', 'NSDictionary', 'NSMutableDictionary')

# Archived anew, class records that say the same of their class become one.
MERGED = 'two records of each class'
VARIANTS = {
    'as it is': lambda plist: plist,
    'unknown keys of items': unknown_keys('OLNode'),
    'unknown keys of the tree': unknown_keys('OLTree', 'OLTreeController'),
    'unknown keys of containers': unknown_keys(*CONTAINERS),
    'unknown keys of values': unknown_keys('NSFont', 'NSAttributedString', 'NSMutableString'),
    'unknown keys of classes': unknown_class_keys,
    'two records of each class': twin_classes,
    'substitutes of classes': hints,
    'values in the top': in_the_top,
    'real versions': version(lambda plist, number: 2.0),
    'number objects as versions': version(lambda plist, number: added(plist, 2)),
    'versions of all kinds': version(mixed_versions),
    'old forms of containers': old_forms,
    'nulls of their own': conditional_nulls,
}


# ----- other places

def shuffled(data, seed=1):
    """Objects in any order in the file, and in another one in the table."""
    dice, table = random.Random(seed), Table(data)
    order, places = list(range(table.source.count)), list(range(table.source.count))
    dice.shuffle(order)
    dice.shuffle(places)
    return table.relaid(order=order, table=places)


def table_reversed(data):
    table = Table(data)
    return table.relaid(table=list(reversed(range(table.source.count))))


def orphans(data):
    """Objects of the table that nothing refers to, as older archivers left them: UIDs, booleans and
    empty containers."""
    source = Source(data)
    more = [scalar_bytes(UID(number)) for number in range(0, len(source.entries), 3)]
    more += [b'\x08', b'\x09', b'\xa0', b'\xd0']
    return with_more(data, more)


def with_more(data, more):
    table = Table(data)
    count = table.source.count + len(more)
    width = table.width
    while count >> 8 * width:
        width *= 2
    return table.relaid(more=more, width=width)


def unused_containers(data):
    """A dictionary and an array that hold much of the file and are held by nothing."""
    table = Table(data)
    count = table.source.count
    width = table.width if count + 2 < 1 << 8 * table.width else 2 * table.width
    some = list(range(1, min(count, 14)))
    strings = [index for index in range(count) if table.source.kind(index) == 5][:10]
    def packed(places):
        return struct.pack('>%d%s' % (len(places), LETTERS[width]), *places)
    return table.relaid(width=width, more=[bytes([0xA0 + len(some)]) + packed(some),
                                           bytes([0xD0 + len(strings)]) + packed(strings + strings)])


LAYOUTS = {
    'as it is': lambda data: data,
    'in any order': shuffled,
    'table from behind': table_reversed,
    'gaps': lambda data: Table(data).relaid(gap=b'\xff\x00gap'),
    'orphans': orphans,
    'unused containers': unused_containers,
    'wide references': lambda data: Table(data).relaid(width=8, sizes=8),
    'odd widths': lambda data: Table(data).relaid(width=3, sizes=5),
    'unused bytes of the trailer': lambda data: Table(data).relaid(unused=b'\1\2\3\4\5\6'),
}


def varied(name, plist):
    return VARIANTS[name](copy.deepcopy(plist))
