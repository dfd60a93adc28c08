"""Documents as graphs of objects, and edits that are done in the graph itself, without the library.

    described(data)                  the graph of an archive, to be compared
    graph = Graph(data)
    graph.move('1', under='2')       what an edit of the program is to come to
    described(graph)

What an edit was asked to store is left out of both graphs with hide(); everything else has to be
what it was: classes, order of keys, kinds and widths, and what is shared.
"""
import archives
from archives import Archive, Difference, UID


def described(data):
    """The graph of an archive from its top: one description for each object, in the order in which
    they are reached, and scalars where they stand."""
    archive = data if isinstance(data, Archive) else Archive(data)
    places, order = {}, []

    def entry(number):
        found = archive.objects[number]
        if number == 0:
            return 'null'
        if found != '$null' and not isinstance(found, (dict, archives.Date)):
            return archives.exact(found)
        if number not in places:
            places[number] = len(order)
            order.append(number)
        return places[number]

    def field(value):
        if isinstance(value, UID):
            return ('to', entry(value.data))
        if isinstance(value, list):
            return ['list'] + [field(each) for each in value]
        if isinstance(value, dict):
            return ['map'] + [(key, field(each)) for key, each in value.items()]
        return archives.exact(value)

    told = [[(key, field(value)) for key, value in archive.top.items()]]
    for number in order:  # grows
        found = archive.objects[number]
        told.append('null entry' if found == '$null' else
                    archives.exact(found) if isinstance(found, archives.Date) else
                    [archive.class_of(number)] + [(key, field(value)) for key, value in
                                                  found.items() if key != '$class'])
    return told


def same(before, after):
    """Raises Difference unless two archives are one graph."""
    one, other = described(before), described(after)
    for mine, theirs in zip(one, other):
        if mine != theirs:
            raise Difference('%.300r became %.300r' % (mine, theirs))
    if len(one) != len(other):
        raise Difference('%d objects became %d' % (len(one), len(other)))


class Graph(Archive):
    """An outline in an archive, whose items are named by paths; '' is the root."""

    def children(self, number):
        """The list of references that a change is made in."""
        return self.objects[self.target(number, 'children')]['NS.objects']

    def count(self, path):
        return len(self.children(self.item(path)))

    def item(self, path):
        number = self.root()
        for position in path.split('.') if path else []:
            number = self.children(number)[int(position) - 1].data
        return number

    def paths(self):
        """Those of all items, in document order."""
        found, pending = [], [('', self.root())]
        while pending:
            path, number = pending.pop()
            if path:
                found.append(path)
            prefix = path + '.' if path else ''
            pending += reversed([(prefix + str(i), child.data)
                                 for i, child in enumerate(self.children(number), 1)])
        return found

    def value(self, path, key):
        """The entry of a value in an item's data; None where there is none."""
        number = self.entries(self.target(self.item(path), 'data')).get(key)
        return None if number is None else self.objects[number]

    def is_rich(self, path, key):
        value = self.value(path, key)
        return isinstance(value, dict) and 'NSString' in value

    def is_plain(self, path, key):
        value = self.value(path, key)
        return isinstance(value, str) or isinstance(value, dict) and 'NS.string' in value

    def leave_out(self, dictionary, keys):
        """Takes keys out of the record of a dictionary."""
        record = self.objects[dictionary]
        kept = [(key, value) for key, value in zip(record['NS.keys'], record['NS.objects'])
                if self.objects[key.data] not in keys]
        record['NS.keys'] = [key for key, _ in kept]
        record['NS.objects'] = [value for _, value in kept]

    def hide(self, path, *keys):
        """Leaves out what an item has under keys."""
        self.leave_out(self.target(self.item(path), 'data'), keys)

    def hide_properties(self, *keys):
        self.leave_out(self.entries(self.target(self.root(), 'data'))['documentProperties'], keys)

    def take(self, path):
        """Takes an item out of its parent's list, with all below it."""
        above, _, position = path.rpartition('.')
        return self.children(self.item(above)).pop(int(position) - 1)

    def put(self, item, above, index):
        parent = self.item(above)
        self.children(parent).insert(index, item)
        self.objects[item.data]['parent'] = UID(parent)

    def unlink(self, path):
        """Makes a parent link a wrong one."""
        self.objects[self.item(path)]['parent'] = UID(0)

    def data(self):
        return archives.plain(self.list)
