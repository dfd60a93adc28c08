"""Every command that changes documents, each with what it is to come to in the graph of objects.

    for name, change in CHANGES.items():
        change(Runner(program, path), document)       raises Difference

A document is one that has two items at the top, of which the second has one below it, and
properties with keywords.
"""
import json
import subprocess

from archives import Difference
from graphs import Graph, same


class Runner:
    """Runs the program over documents that are put into one file."""

    def __init__(self, program, path):
        self.program, self.path = program, path

    def __call__(self, document, *arguments, lines=()):
        """What becomes of a document; "FILE" stands for it among the arguments."""
        self.path.write_bytes(document)
        done = subprocess.run(
            [str(self.program), *[str(self.path) if x == 'FILE' else x for x in arguments]],
            input=''.join(json.dumps(line) + '\n' for line in lines).encode(),
            capture_output=True, timeout=60)
        if done.returncode != 0 or done.stderr:
            raise Difference('%s: status %d, %s%s' % (' '.join(arguments), done.returncode,
                                                      done.stdout.decode(errors='replace'),
                                                      done.stderr.decode(errors='replace')))
        return self.path.read_bytes()


CHANGES = {}


def change(function):
    CHANGES[function.__name__.replace('_', ' ')] = function
    return function


def expect(is_so, what):
    if not is_so:
        raise Difference(what)


def keywords(run, document, arguments, wanted):
    before, after = Graph(document), Graph(run(document, 'keywords', *arguments, 'FILE'))
    expect(after.keywords() == wanted(before.keywords()), 'keywords %r' % after.keywords())
    for graph in before, after:
        graph.hide_properties('keywords')
    same(before, after)


@change
def keywords_add(run, document):
    keywords(run, document, ['add', '-k', 'n', '-k', 'größe'], lambda had: had + ['n', 'größe'])


@change
def keywords_remove(run, document):
    gone = Graph(document).keywords()[0]
    keywords(run, document, ['remove', '-k', gone], lambda had: [x for x in had if x != gone])


@change
def keywords_set(run, document):
    keywords(run, document, ['set', '-k', 'z'], lambda had: ['z'])
    keywords(run, document, ['set'], lambda had: [])


@change
def keywords_rename(run, document):
    old = Graph(document).keywords()[0]
    keywords(run, document, ['rename', '--from', old, '--to', 'n'],
             lambda had: ['n' if x == old else x for x in had])


@change
def properties(run, document):
    before = Graph(document)
    after = Graph(run(document, 'properties', 'FILE', '--set', 'title=T', '--set', 'authors=A',
                      '--set', 'authors=B', '--unset', 'comment'))
    for graph in before, after:
        graph.hide_properties('title', 'authors', *(['comment'] if graph is before else []))
    same(before, after)


def converted(run, document, option, is_other):
    before, after = Graph(document), Graph(run(document, 'convert', option, 'FILE'))
    others = [(path, key) for path in before.paths() for key in ('title', 'note')
              if is_other(before, path, key)]
    for path, key in others:
        expect(not is_other(after, path, key), '%s of %s was left' % (key, path))
        for graph in before, after:
            graph.hide(path, key)
    same(before, after)


@change
def convert_to_rich(run, document):
    converted(run, document, '--rich', Graph.is_plain)


@change
def convert_to_plain(run, document):
    converted(run, document, '--plain', Graph.is_rich)


@change
def item_add(run, document):
    tops, below = Graph(document).count(''), Graph(document).count('2')
    for place, new in ((['--under', '2'], '2.%d' % (below + 1)), (['--before', '1'], '1'),
                       (['--after', '2.1'], '2.2'), ([], str(tops + 1))):
        after = Graph(run(document, 'item', 'add', 'FILE', '--title', 'new', '--note', 'n', *place))
        expect(after.value(new, 'title') == 'new', 'no new item')
        after.take(new)
        same(Graph(document), after)


@change
def item_set(run, document):
    for path in ('1', '2', '2.1'):
        before = Graph(document)
        after = Graph(run(document, 'item', 'set', 'FILE', path, '--title', 'ri!', '--note=n', '--checked'))
        for graph in before, after:
            graph.hide(path, 'title', 'note', 'checkStatus')
        same(before, after)


@change
def item_delete(run, document):
    for path in ('1', '2', '2.1'):
        before = Graph(document)
        before.take(path)
        same(before, Graph(run(document, 'item', 'delete', 'FILE', path)))


@change
def item_move(run, document):
    before = Graph(document)
    moved = before.take('1')
    before.put(moved, '1.1', before.count('1.1'))
    same(before, Graph(run(document, 'item', 'move', 'FILE', '1', '--under', '2.1')))
    before = Graph(document)
    before.put(before.take('2.1'), '', 0)
    same(before, Graph(run(document, 'item', 'move', 'FILE', '2.1', '--before', '1')))
    before = Graph(document)
    before.put(before.take('1'), '', 1)
    same(before, Graph(run(document, 'item', 'move', 'FILE', '1', '--after', '2')))


@change
def item_indent_and_outdent(run, document):
    before = Graph(document)
    before.put(before.take('2'), '1', before.count('1'))
    same(before, Graph(run(document, 'item', 'indent', 'FILE', '2')))
    before = Graph(document)
    before.put(before.take('2.1'), '', 2)
    same(before, Graph(run(document, 'item', 'outdent', 'FILE', '2.1')))


@change
def apply(run, document):
    before = Graph(document)
    after = Graph(run(document, 'apply', 'FILE', lines=[
        {'op': 'add', 'title': 'new', 'under': '1'}, {'op': 'outdent', 'paths': ['2.1']},
        {'op': 'set', 'paths': ['2'], 'title': 'set', 'checked': True}, {'op': 'indent', 'paths': ['2']},
        {'op': 'move', 'paths': ['2'], 'before': '1'}, {'op': 'add', 'title': 'gone'},
        {'op': 'delete', 'paths': [str(before.count('') + 1)]}]))
    moved = before.take('2.1')
    second = before.take('2')
    new = '2.%d' % (before.count('1') + 1)
    before.put(second, '1', before.count('1'))
    before.put(moved, '', 0)
    expect(after.value(new, 'title') == 'new', 'no new item')
    after.take(new)
    for graph in before, after:
        graph.hide(new, 'title', 'checkStatus')     # which was item 2
    same(before, after)


@change
def check_and_repair(run, document):
    expect(run(document, 'check', 'FILE', '--repair') == document, 'a sound document was repaired')
    for path in ('2', '2.1'):
        fault = Graph(document)
        fault.unlink(path)
        same(Graph(document), Graph(run(fault.data(), 'check', 'FILE', '--repair')))


@change
def nothing_to_change(run, document):
    title = Graph(document).value('1', 'title')
    first = Graph(document).keywords()[0]
    for arguments in (['keywords', 'add', '-k', first, 'FILE'], ['properties', 'FILE', '--unset', 'copyright'],
                      ['item', 'move', 'FILE', '1', '--before', '2'], ['apply', 'FILE'],
                      *([['item', 'set', 'FILE', '1', '--title', title]] if isinstance(title, str) else [])):
        expect(run(document, *arguments) == document, '%s changed the file' % ' '.join(arguments))


def canonical(run, document):
    """The document as the program writes it: keywords are added, and nothing else is."""
    return run(document, 'keywords', 'add', '-k', 'written', 'FILE')
