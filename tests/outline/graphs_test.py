"""What a command was not asked to change stays: the graphs of objects before and after each of them,
over documents with every kind of value in every place and over the sample document."""
import pathlib

import driver
from driver import archives
import changes
from graphs import Graph, same
from kinds import KINDS, placed

GARDEN = pathlib.Path(__file__).resolve().parents[2] / 'examples' / 'garden.tavlin'


class Graphs(driver.Case):
    def check(self, document):
        run = changes.Runner(driver.PROGRAM, self.folder / 'document.tavlin')
        written = changes.canonical(run, document)
        archives.compared(document, written, archives.Archive(document).keywords() + ['written'])
        for name, change in changes.CHANGES.items():
            with self.subTest(name):
                change(run, written)

    def test_what_a_change_does_besides_is_seen(self):
        document = archives.document(placed(KINDS['rich text']))
        run = changes.Runner(driver.PROGRAM, self.folder / 'document.tavlin')
        before = Graph(changes.canonical(run, document))
        for spoil in (lambda graph: graph.hide('1', 'list'), lambda graph: graph.take('2.1'),
                      lambda graph: graph.unlink('2'), lambda graph: graph.hide_properties('comment'),
                      lambda graph: graph.put(graph.take('2'), '', 0), self.split):
            after = Graph(before.data())
            same(before, after)
            spoil(after)
            with self.assertRaises(archives.Difference):
                same(before, after)

    @staticmethod
    def split(graph):
        """A value that two places share becomes one for each."""
        values = graph.entries(graph.target(graph.item('1'), 'data'))
        record = graph.objects[graph.target(graph.item('1'), 'data')]
        graph.objects.append(dict(graph.objects[values['value']]))
        record['NS.objects'] = [archives.UID(len(graph.objects) - 1) if each.data == values['value'] else each
                                for each in record['NS.objects']]

    def test_values_of_every_kind(self):
        for name, make in KINDS.items():
            with self.subTest(name):
                self.check(archives.document(placed(make)))

    def test_the_sample_document(self):
        self.check(GARDEN.read_bytes())


if __name__ == '__main__':
    driver.main()
