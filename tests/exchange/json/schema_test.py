"""The JSON of documents against docs/outline.schema.json.

    schema_test.py JSON-CONVERT"""
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

import jsonschema

ROOT = pathlib.Path(__file__).resolve().parents[3]
SCHEMA = json.loads((ROOT / 'docs/outline.schema.json').read_text())
CONVERT = sys.argv[1]


def exported(*arguments):
    result = subprocess.run([CONVERT, *map(str, arguments)], check=True, capture_output=True)
    return json.loads(result.stdout)


class Schema(unittest.TestCase):
    def setUp(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)
        self.validator = jsonschema.Draft202012Validator(SCHEMA)

    def check(self, document):
        for error in self.validator.iter_errors(document):
            self.fail(f'{list(error.absolute_path)}: {error.message[:400]}')

    def test_the_sample_document(self):
        self.check(exported('export', ROOT / 'examples/garden.tavlin'))

    def test_random_documents_with_every_kind_of_value(self):
        for seed in range(40):
            self.check(exported('random', seed))

    def test_what_is_written_by_hand(self):
        document = json.loads((ROOT / 'tests/exchange/html/garden.json').read_text())
        with tempfile.TemporaryDirectory() as scratch:
            file = f'{scratch}/garden.tavlin'
            subprocess.run([CONVERT, 'import', ROOT / 'tests/exchange/html/garden.json', file],
                           check=True)
            written = exported('export', file)
        self.check(written)
        self.assertEqual(written['properties'], document['properties'])
        self.assertEqual([item['title'] for item in written['items'][2:]],
                         [item['title'] for item in document['items'][2:]])

    def test_it_refuses_what_is_none(self):
        document = exported('export', ROOT / 'examples/garden.tavlin')
        for change in ({'tavlin': 2}, {'items': {}}, {'items': [{}]}, {'more': 1},
                       {'items': [{'title': {'date': 'soon'}}]},
                       {'items': [{'title': {'text': 'a', 'runs': [{}]}}]},
                       {'items': [{'title': 'a', 'expanded': 1}]},
                       {'settings': {'text': 'a'}}, {'items': [{'title': 'a', 'x': 1}]}):
            self.assertFalse(self.validator.is_valid({**document, **change}), change)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1])
