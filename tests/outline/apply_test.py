"""tavlin apply: scripts against a naive model, all or nothing, files and standard input."""
import json
import os
import random

import changing
import documents
import driver
from changing import NULL, rich
from driver import Item


class Naive:
    """A tree in lists, edited as the operations say."""

    def __init__(self, node):
        self.title, self.note, self.checked, self.old = node.title, node.note, node.checked, node
        self.kids = [Naive(kid) for kid in node.kids]

    @staticmethod
    def new(title, note, checked):
        made = Naive.__new__(Naive)
        made.title, made.note, made.checked, made.old, made.kids = title, note, checked, None, []
        return made

    def below(self, level=0):
        for kid in self.kids:
            yield level, kid
            yield from kid.below(level + 1)

    def place(self, wanted):
        """The list that holds an item, and its index there."""
        for parent in [self, *[x for _, x in self.below()]]:
            for i, kid in enumerate(parent.kids):
                if kid is wanted:
                    return parent, i
        raise KeyError

    def at(self, path):
        node = self
        for i in path.split('.'):
            node = node.kids[int(i) - 1]
        return node

    def path(self, wanted):
        steps = []
        while wanted is not self:
            parent, i = self.place(wanted)
            steps.insert(0, str(i + 1))
            wanted = parent
        return '.'.join(steps)

    def holds(self, outer, inner):
        return outer is inner or any(x is inner for _, x in outer.below())

    def take(self, node):
        parent, i = self.place(node)
        del parent.kids[i]

    def put(self, nodes, key, anchor):
        if key == 'under':
            anchor.kids += nodes
            return
        parent, i = self.place(anchor)
        i += key == 'after'
        parent.kids[i:i] = nodes

    def carry_out(self, o):
        """The new paths, or None where the operation has to be refused."""
        nodes = [self.at(p) for p in o.get('paths', [])]
        key = next((k for k in ('under', 'before', 'after') if k in o), None)
        anchor = self.at(o[key]) if key else None
        if o['op'] == 'add':
            nodes = [Naive.new(o['title'], o.get('note'), o.get('checked', False))]
            self.put(nodes, key or 'under', anchor or self)
            return [self.path(nodes[0])]
        if o['op'] == 'set':
            node = nodes[0]
            node.title, node.note = o.get('title', node.title), o.get('note', node.note)
            node.checked = o.get('checked', node.checked) and not o.get('unchecked', False)
            return []
        tops = [x for i, x in enumerate(nodes) if not any(y is x for y in nodes[:i])
                and not any(y is not x and self.holds(y, x) for y in nodes)]
        if o['op'] == 'delete':
            for node in tops:
                self.take(node)
            return []
        if o['op'] == 'move':
            beside = key != 'under' and any(anchor is x for x in tops)
            if not beside and any(self.holds(x, anchor) for x in tops):
                return None
            mark = Naive.new('mark', None, False)     # keeps the place
            self.put([mark], key, anchor)
            for node in tops:
                self.take(node)
            parent, i = self.place(mark)
            parent.kids[i:i + 1] = tops
            return [self.path(x) for x in tops]
        order = [x for _, x in self.below()]
        tops.sort(key=lambda x: next(i for i, y in enumerate(order) if y is x))
        if o['op'] == 'indent':
            if any(self.place(x)[1] == 0 for x in tops):
                return None
            for node in tops:
                parent, i = self.place(node)
                self.take(node)
                parent.kids[i - 1].kids.append(node)
            return []
        if any(self.place(x)[0] is self for x in tops):
            return None
        for node in reversed(tops):
            parent = self.place(node)[0]
            self.take(node)
            self.put([node], 'after', parent)
        return []

    def outline(self):
        return [(level, x.title, x.note or None, bool(x.checked)) for level, x in self.below()]


def some_items(r, count):
    top = Item('top')
    nodes = [top]
    for i in range(count):
        text = 'q%d %s' % (i, r.choice(('plain', NULL if r.random() < .5 else 'x', 'é日本', '\U0001f600', 'two\nlines')))
        item = Item(rich(text) if r.random() < .3 else text,
                    note=r.choice((None, None, 'note', rich('rich note'))),
                    checked=r.choice((None, True, False)), shows=r.choice((None, None, None, False, True)),
                    expanded=r.random() < .5, weight=r.random())
        r.choice(nodes[-8:]).kids.append(item)
        nodes.append(item)
    return top.kids


def operation(r, tree):
    paths = [tree.path(x) for _, x in tree.below()]
    if not paths:
        return {'op': 'add', 'title': 'only'}
    op = r.choice(('add', 'add', 'set', 'move', 'move', 'delete', 'indent', 'outdent'))
    place = {r.choice(('under', 'before', 'after')): r.choice(paths)}
    if op == 'add':
        return {'op': op, 'title': r.choice(('', 'new', '$null', 'x\ny')), **r.choice((place, place, {})),
                **r.choice(({}, {'note': 'n'}, {'checked': True}, {'checked': False}))}
    if op == 'set':
        return {'op': op, 'paths': [r.choice(paths)],
                **r.choice(({'title': 'set'}, {'note': 'set'}, {'note': ''}, {'checked': True},
                            {'checked': False}, {'unchecked': True}, {'title': '', 'checked': True}))}
    chosen = [r.choice(paths) for _ in range(r.choice((1, 1, 2, 4)))]
    return {'op': op, 'paths': chosen, **(place if op == 'move' else {})}


def script(r, tree, length):
    """Operations that can be carried out, and the paths they print; one that cannot, or None."""
    operations, printed, refused = [], [], None
    while len(operations) < length:
        wanted = operation(r, tree)
        paths = tree.carry_out(wanted)
        if paths is None:
            refused = wanted
            break
        operations.append(wanted)
        printed += paths
    return operations, printed, refused


def lines(operations):
    return ''.join(json.dumps(x) + '\n' for x in operations).encode()


class Apply(changing.Case):
    def test_random_scripts(self):
        refusals = 0
        for seed in range(60):
            r = random.Random(seed)
            file = self.document(some_items(r, r.choice((0, 5, 40))))
            tree = Naive(self.before.root)
            operations, printed, refused = script(r, tree, r.choice((1, 10, 40)))
            if refused is not None:
                refusals += 1
                message = self.fails('apply', file, stdin=lines([*operations, refused]))
                self.assertTrue(message.startswith(
                    'tavlin: %s: operation in line %d: ' % (file, len(operations) + 1)), message)
                self.untouched(file)
            if not operations:
                continue
            out = self.ok('apply', file, stdin=lines(operations))
            self.assertEqual(out.split(), printed, (seed, operations))
            after = documents.Document(file)
            self.assertEqual([(a, b or '', c, d) for a, b, c, d in after.outline()], tree.outline(), seed)
            pairs = [(x.old, node) for (_, x), node in zip(tree.below(), after.items) if x.old]
            self.assertEqual(documents.differences(self.before, after, pairs, ('title', 'note', 'checkStatus')), [])
            for old, node in pairs:
                for key in ('title', 'note'):
                    if self.before.text(old, key) == after.text(node, key) and key in old.data:
                        self.assertEqual(self.before.content(old.data[key]), after.content(node.data[key]))
        self.assertGreater(refusals, 5)

    def test_operations_come_from_a_file_or_standard_input(self):
        one = lines([{'op': 'add', 'title': 'x'}])
        name = self.folder / 'operations'
        name.write_bytes(one)
        for arguments, stdin in (([name], b''), (['-'], one), ([], one), ([], b'\n \r\n' + one.strip() + b'\r\n\n'),
                                 ([], one.strip())):
            file = self.document()
            self.assertEqual(self.ok('apply', file, *arguments, stdin=stdin), '3\n')
            self.assertEqual(documents.Document(file).items[-1].title, 'x')
        file = self.document()
        self.assertEqual(self.fails('apply', file, self.folder / 'gone'),
                         'tavlin: %s: the operations %s: No such file or directory\n' % (file, self.folder / 'gone'))
        self.assertIn('standard input', self.fails('apply', '-', name))
        self.fails('apply')
        self.untouched(file)

    def test_dry_run_and_backup(self):
        operations = lines([{'op': 'add', 'title': 'x'}, {'op': 'move', 'paths': ['3'], 'before': '1'},
                            {'op': 'delete', 'paths': ['2', '3']}, {'op': 'set', 'paths': ['1'], 'title': 'x'}])
        file = self.document()
        self.assertEqual(self.ok('apply', file, '--dry-run', stdin=operations), '3\n1\ndelete 2 3\n')
        self.untouched(file)
        name = self.folder / 'operations'
        name.write_bytes(operations)
        self.check_backup(file, 'apply', file, name)
        self.assertEqual([x.title for x in documents.Document(file).items], ['x'])

    def test_nothing_is_written_where_nothing_changes(self):
        file = self.document()
        for stdin in (b'', b'\n\n', lines([{'op': 'set', 'paths': ['1'], 'title': 'a'}])):
            self.assertEqual(self.ok('apply', file, stdin=stdin), '')
            self.untouched(file)

    def test_a_fault_in_the_operations(self):
        file = self.document()
        good = lines([{'op': 'delete', 'paths': ['1']}, {'op': 'add', 'title': 'x'}])
        for bad, why in ((b'{"op": "delete", "paths": ["9"]}', 'there is no item 9'), (b'{"op": "fly"}', 'fly'),
                         (b'not json', 'no JSON value'), (b'["op"]', 'a JSON object'), (b'{"op": "add"}', 'title'),
                         (b'{"op": "set", "paths": "1", "title": 5}', '"paths" is no array'),
                         (b'{"op": "add", "title": "\xff"}', 'no JSON value'),
                         (b'{"op": "set", "paths": ["1"], "unchecked": false}', '"unchecked" can only be true'),
                         (b'[' * 1000000, 'no JSON value')):
            result = self.fails('apply', file, stdin=good + b'\n' + bad + b'\n' + good, says=why)
            self.assertTrue(result.startswith('tavlin: %s: operation in line 4: ' % file), result)
            self.assertEqual(result.count('\n'), 1)
            self.untouched(file)


if __name__ == '__main__':
    driver.main()
