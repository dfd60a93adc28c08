"""Documents as the file has them, read without the program.

    document = Document(path)
    document.items                 Nodes in document order: path, title, note, checked, kids …
    document.properties            a dict, or None
    document.content(uid)          any value as nested tuples, to be compared
    unchanged(before, after, ...)  what differs between two documents besides what is named
"""
import plistlib

UID = plistlib.UID


class Node:
    def __init__(self, record, data, path, parent):
        self.record, self.data, self.path, self.parent, self.kids = record, data, path, parent, []


class Document:
    def __init__(self, path):
        with open(path, 'rb') as file:
            archive = plistlib.load(file)
        self.objects = archive['$objects']
        controller = self.record(archive['$top']['root'])
        self.controller = self.name(controller)
        self.items, self.root, seen = [], None, set()
        stack = [(self.record(controller['tree'])['root'], None, ())]
        while stack:
            uid, parent, path_ = stack.pop()
            assert uid.data not in seen, 'an item is listed twice'
            seen.add(uid.data)
            record = self.record(uid)
            node = Node(record, self.pairs(record['data']), '.'.join(map(str, path_)), parent)
            node.uid = uid
            if parent is None:
                self.root = node
            else:
                assert record['parent'].data == parent.uid.data, 'a parent link is wrong'
                parent.kids.append(node)
                self.items.append(node)
            kids = self.record(record['children'])['NS.objects']
            stack += [(kid, node, path_ + (i,)) for i, kid in reversed(list(enumerate(kids, 1)))]
        for node in [self.root, *self.items]:
            node.title, node.note = self.text(node, 'title'), self.text(node, 'note')
            node.checked = bool(self.plain(node.data.get('checkStatus')))
        properties = self.root.data.get('documentProperties')
        self.properties = None if properties is None else self.plain(properties)

    def record(self, uid):
        return self.objects[uid.data]

    def name(self, record):
        return self.record(record['$class'])['$classname']

    def string(self, uid):
        value = self.record(uid)
        if isinstance(value, dict) and 'NS.string' in value:
            return value['NS.string']
        return value if isinstance(value, str) and value != '$null' else None

    def pairs(self, uid):
        record = self.record(uid)
        return {self.string(key): value
                for key, value in zip(record['NS.keys'], record['NS.objects'])}

    def is_rich(self, node, key):
        uid = node.data.get(key)
        return uid is not None and isinstance(self.record(uid), dict) and 'NSString' in self.record(uid)

    def text(self, node, key):
        uid = node.data.get(key)
        if uid is None:
            return None
        if self.is_rich(node, key):
            return self.string(self.record(uid)['NSString'])
        text = self.string(uid)
        return text if text is None else text.replace('\\$null', '$null')

    def plain(self, uid):
        """Texts, numbers, lists and dictionaries as Python has them."""
        if uid is None or uid.data == 0:
            return None
        value = self.record(uid)
        if isinstance(value, str):
            return value.replace('\\$null', '$null')
        if not isinstance(value, dict):
            return value
        if 'NS.keys' in value:
            return {key: self.plain(each) for key, each in self.pairs(uid).items()}
        if 'NS.objects' in value:
            return [self.plain(each) for each in value['NS.objects']]
        if 'NS.string' in value:
            return value['NS.string'].replace('\\$null', '$null')
        return self.string(value['NSString']) if 'NSString' in value else value

    def content(self, value, above=()):
        """What a value is, whatever the numbers of its objects."""
        if isinstance(value, UID):
            if value.data in above:
                return 'circle', above[::-1].index(value.data)
            return self.content(self.objects[value.data], above + (value.data,))
        if isinstance(value, dict):
            return tuple(sorted((key, self.content(each, above)) for key, each in value.items()))
        if isinstance(value, list):
            return tuple(self.content(each, above) for each in value)
        return type(value).__name__, value

    def values(self, node, but=()):
        """What a node has, but for its place and the keys that are named."""
        flags = bool(node.record['expanded']), bool(node.record['outlineStyle'])
        return flags, {key: self.content(uid) for key, uid in node.data.items() if key not in but}

    def outline(self):
        """[(level, title, note, checked), …]"""
        return [(node.path.count('.'), node.title, node.note, node.checked) for node in self.items]


def differences(before, after, pairs, items_but=(), root_but=()):
    """What the nodes of two documents, in pairs, have differently but for those keys."""
    found = []
    if before.controller != after.controller:
        found.append('the controller is %s' % after.controller)
    if before.values(before.root, root_but) != after.values(after.root, root_but):
        found.append('the document has other values')
    for old, new in pairs:
        if before.values(old, items_but) != after.values(new, items_but):
            found.append('item %s has other values' % new.path)
    return found
