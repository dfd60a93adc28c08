"""Changes of keywords from outside, and what they leave as it was.

    Case                       has a program, the first argument, write keywords into documents
    same_but_keywords(...)     raises Difference unless two documents are one graph otherwise
    replaced(before, after)    the entries that are no longer what they were, byte for byte
"""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

from archives import Difference
from graphs import Graph, same
from numbering import Numbering
from stored import NULL, Source, Table


def class_records(graph):
    """What the records of all classes hold, but for that of the list of keywords, which is new."""
    number = keywords_number(graph)
    own = graph.name_of(number) if number else None
    return sorted({repr(sorted(entry.items())) for entry in graph.objects if isinstance(entry, dict)
                   and '$classname' in entry and entry['$classname'] != own})


def same_but_keywords(before, after, keywords):
    """Raises Difference unless two documents are one graph but for their keywords."""
    one, other = Graph(before), Graph(after)
    if keywords_of(other) != keywords:
        raise Difference('keywords %r' % keywords_of(other))
    if class_records(one) != class_records(other):
        raise Difference('records of classes: %r became %r' % (class_records(one),
                                                               class_records(other)))
    same(*map(without_keywords, (one, other)))


def without_keywords(graph):
    """The graph without the keywords.  The dictionaries that hold them may have been of an old form,
    with a key for each element, and are of the usual one here."""
    settings = settings_of(graph)
    for number in graph.target(graph.root(), 'data'), settings:
        record = graph.objects[number]
        pairs = [(key, value) for key, value in zip(elements(record, 'key'), elements(record))
                 if number != settings or graph.objects[key.data] != 'keywords']
        for name in [name for name in record if name.startswith('NS.')]:
            del record[name]
        record.update({'NS.keys': [key for key, _ in pairs],
                       'NS.objects': [value for _, value in pairs]})
        for name in sorted(record):
            record[name] = record.pop(name)
    return graph


def settings_of(graph):
    """The number of the properties."""
    data = graph.objects[graph.target(graph.root(), 'data')]
    return next(value.data for key, value in zip(elements(data, 'key'), elements(data))
                if graph.objects[key.data] == 'documentProperties')


def keywords_number(graph):
    settings = graph.objects[settings_of(graph)]
    return next((value.data for key, value in zip(elements(settings, 'key'), elements(settings))
                 if graph.objects[key.data] == 'keywords'), None)


def keywords_of(graph):
    return [graph.objects[each.data] for each in elements(graph.objects[keywords_number(graph)])]


def allowed(data, keywords):
    """The numbers whose entries a change of the keywords may replace: the list, what holds it, the
    keywords that no longer stand where they stood, and nulls that are nobody's."""
    graph = Graph(data)
    item = graph.root()
    numbers = {item, graph.target(item, 'data'), settings_of(graph), *idle_nulls(data)}
    there = keywords_number(graph)
    if there is not None:
        numbers.add(there)
        kept = list(keywords) + [None] * len(graph.objects)
        if graph.class_of(there)[2]:    # a list of another class than that of new ones
            numbers.add(graph.target(there, '$class'))
            kept = [None] * len(graph.objects)
        numbers |= {each.data for at, each in enumerate(elements(graph.objects[there]))
                    if graph.objects[each.data] != kept[at]}
    return numbers


def elements(record, what='object'):
    """The values, or keys, of a container, which in the old form has a key for each."""
    if 'NS.%ss' % what in record:
        return record['NS.%ss' % what]
    return [record[key] for key in sorted((key for key in record if key.startswith('NS.%s.' % what)),
                                          key=lambda key: int(key.rpartition('.')[2]))]


def replaced(before, after):
    """The numbers of the entries that are no longer what they were, byte for byte."""
    one, other = Table(before).entries(), Table(after).entries()
    return {number for number, entry in enumerate(one)
            if number >= len(other) or other[number] != entry}


def idle(data):
    """The numbers that nothing leads to."""
    return [number for number, place in enumerate(Numbering(Source(data)).by_level().numbers)
            if number and not place]


def idle_nulls(data):
    source = Source(data)
    return [number for number in idle(data) if source.raw(source.entries[number]) == NULL]


def is_anew(before, after):
    """Whether archiving put entries into another order; of hands other than the own."""
    return len(replaced(before, after)) > len(Source(before).entries) // 2


def is_in(text, data):
    return text.encode() in data or text.encode('utf-16-be') in data


def nodes(graph):
    return [entry for entry in graph.objects if isinstance(entry, dict) and '$class' in entry and
            graph.objects[entry['$class'].data]['$classname'].startswith('OL')]


def in_order(graph):
    """Has the keys of the outline's own classes stand in one order, the root come first in the top,
    and all versions be of one kind."""
    graph.top = {'root': graph.top['root'], **graph.top}
    for entry in nodes(graph):
        for key in sorted(entry):
            entry[key] = entry.pop(key)
        if 'encoding_version' in entry:
            entry['encoding_version'] = 2
    return graph


def one_graph(one, other):
    """Raises Difference unless two documents are one graph, their keywords as well."""
    graphs = [in_order(Graph(data)) for data in (one, other)]
    same(*graphs)
    classes = [class_records(graph) for graph in graphs]
    if classes[0] != classes[1]:
        raise Difference('records of classes: %r became %r' % tuple(classes))


class Case(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.path = os.path.join(self.folder, 'document.tavlin')

    def tearDown(self):
        shutil.rmtree(self.folder)

    def written(self, content, *keywords):
        with open(self.path, 'wb') as stream:
            stream.write(content)
        done = subprocess.run([sys.argv[1], '-w', self.path, *keywords], capture_output=True, timeout=300)
        self.assertEqual((done.returncode, done.stderr), (0, b''), done)
        with open(self.path, 'rb') as stream:
            return stream.read()

    def each(self, names, action):
        for name in names:
            with self.subTest(name):
                action(name)

    def check_written(self, before, *keywords):
        """What a write makes of a document, which is the same but for the keywords; writing again
        changes nothing."""
        after = self.written(before, *keywords)
        try:
            same_but_keywords(before, after, list(keywords))
        except Difference as difference:
            self.fail(str(difference))
        self.assertEqual(self.written(after, *keywords), after, 'a second write changes the file')
        self.assertLessEqual(len(idle(after)), len(idle(before)), 'more entries that nothing refers to')
        return after

    def check_in_place(self, before, *keywords):
        """The same, and all that was there stays where it is."""
        after = self.check_written(before, *keywords)
        changed = replaced(before, after) - allowed(before, keywords)
        self.assertLessEqual(len(changed), self.moved(before, after),
                             'entries are no longer what they were: %s' % sorted(changed)[:20])
        return after

    def check_anew(self, before, *keywords):
        """The same graph, and hardly an entry is where it was."""
        after = self.check_written(before, *keywords)
        self.assertTrue(is_anew(before, after), 'it was not archived anew')
        return after

    @staticmethod
    def moved(before, after):
        """How many entries may be others when the last ones took numbers that became free: those,
        and who mentions them."""
        gone = len(Source(before).entries) - len(Source(after).entries)
        return max(0, 8 * gone)
