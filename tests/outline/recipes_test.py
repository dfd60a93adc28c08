"""The recipes of the README, as they stand there."""
import json
import os
import pathlib
import shlex
import shutil
import subprocess

import changing
import documents
import driver
from changing import NULL, rich
from driver import Item
from graphs import Graph

README = pathlib.Path(__file__).resolve().parents[2] / 'README.md'


def recipes():
    """The commands under "Recipes", a text for each block."""
    section = README.read_text().split('\n## Recipes\n')[1].split('\n## ')[0]
    blocks, before = [], ''
    for line in section.splitlines():
        if line.startswith('    '):
            if not before.startswith('    '):
                blocks.append('')
            blocks[-1] += line[4:] + '\n'
        before = line
    return blocks


class Recipes(changing.Case):
    def cook(self, start, change=None, says=lambda err: err == ''):
        """Runs the recipe that begins so, or what a function makes of it."""
        block, = [x for x in recipes() if x.startswith(start)]
        block = change(block) if change else block
        path = ':'.join([str(self.folder / 'bin'), os.path.dirname(driver.PROGRAM),
                         driver.ENVIRONMENT['PATH']])
        done = subprocess.run(['bash', '-eu', '-o', 'pipefail', '-c', block], cwd=self.folder,
                              env={**driver.ENVIRONMENT, 'PATH': path, 'HOME': str(self.folder),
                                   'GIT_PAGER': 'cat', 'GIT_CONFIG_GLOBAL': os.devnull,
                                   'GIT_CONFIG_NOSYSTEM': '1'},
                              capture_output=True, text=True, timeout=120)
        self.assertEqual(done.returncode, 0, (block, done.stderr))
        self.assertTrue(says(done.stderr), (block, done.stderr))
        return done.stdout

    def needs(self, tool):
        """The place of a tool; the test is skipped where there is none."""
        place = shutil.which(tool)
        if not place:
            self.skipTest(tool + ' is not there')
        return place

    def titles(self, name):
        return ['%s %s' % (x.path, x.title) for x in documents.Document(self.folder / name).items]

    def test_tag_all_documents_of_a_folder(self):
        self.save('Garden/beds.tavlin', [Item('x')], {'keywords': ['garden', 'beds']})
        self.save('Garden/old/trees.tavlin', [Item('x')])
        self.assertEqual(self.cook('tavlin keywords add'), '2\t2027\n2\tgarden\n1\tbeds\n')
        self.assertEqual(documents.Document(self.folder / 'Garden/beds.tavlin').properties['keywords'],
                         ['garden', 'beds', '2027'])

    def test_move_what_is_done(self):
        self.save('todo.tavlin', [
            Item('a: b', kids=[Item('one', checked=True, kids=[Item('1', checked=True), Item('2')]),
                               Item('two', checked=False)]),
            Item(NULL, checked=True), Item('', checked=True), Item('hidden', checked=True, shows=False),
            Item(rich('three'), note='done?')])
        self.assertEqual(self.cook('paths='), '4.1\n4.2\n4.3\n')
        self.assertEqual(self.titles('todo.tavlin'),
                         ['1 a: b', '1.1 two', '2 hidden', '3 three', '4 Done in March', '4.1 one',
                          '4.1.1 1', '4.1.2 2', '4.2 $null', '4.3 '])

    def test_make_a_document_from_a_template(self):
        self.save('template.tavlin', [Item(rich('Where'), checked=True), Item('How'), Item('Packing')],
                  {'title': 'Template', 'keywords': ['template'], 'comment': 'kept'})
        self.assertEqual(self.cook('cp template'), '1.1\n')
        document = documents.Document(self.folder / 'graz.tavlin')
        self.assertEqual(document.properties,
                         {'title': 'Trip to Graz', 'authors': ['Ada Moss'], 'comment': 'kept'})
        self.assertEqual(document.outline(), [(0, 'Graz, 3 to 7 May', None, False),
                                              (1, 'Book the night train', 'Couchette', False),
                                              (0, 'Packing', None, False)])
        self.assertEqual(self.titles('template.tavlin'), ['1 Where', '2 How', '3 Packing'])

    def test_look_at_all_documents_every_night(self):
        def command(line):
            # the minute, the hour, and every day, month and day of the week
            self.assertRegex(line, r'^\d+ \d+ \* \* \* .*\n$')
            self.assertNotIn('%', line)     # which is a line break in a crontab
            return 'exec /bin/sh -c ' + shlex.quote(line.split(None, 5)[5].strip())

        def told():
            return self.cook('17 3 * * *', command)
        sound = self.save('Outlines/sound.tavlin', [Item('a')])
        with open(sound, 'rb') as stream:
            data = stream.read()
        noted = Graph(data)
        noted.objects[noted.item('1')]['encoding_version'] = 7
        (self.folder / 'Outlines/noted.tavlin').write_bytes(noted.data())
        self.assertIn('[version]', self.ok('check', self.folder / 'Outlines/noted.tavlin'))
        self.assertEqual(told(), '')
        fault = Graph(data)
        fault.unlink('1')
        (self.folder / 'Outlines/sub').mkdir()
        (self.folder / 'Outlines/sub/fault.tavlin').write_bytes(fault.data())
        (self.folder / 'Outlines/empty.tavlin').write_bytes(b'')
        decoder, text, found = json.JSONDecoder(), told(), []
        while text:
            value, end = decoder.raw_decode(text)
            found.append((value['file'], [x['code'] for x in value['findings']]))
            text = text[end:].lstrip()
        self.assertEqual(found, [(str(self.folder / 'Outlines/empty.tavlin'), ['archive']),
                                 (str(self.folder / 'Outlines/sub/fault.tavlin'), ['parent-link'])])

    def test_hand_an_outline_to_another_outliner(self):
        self.save('garden.tavlin', [Item('Spring', note='early', kids=[Item('Sow')]), Item('Summer')],
                  {'title': 'Garden', 'authors': ['Ada Moss']})
        (self.folder / 'notes.md').write_text('# Weeds\n\n- thistles\n')
        self.cook('tavlin export -o garden.opml')
        document = documents.Document(self.folder / 'returned.tavlin')
        self.assertEqual(document.properties, {'title': 'Garden', 'authors': ['Ada Moss']})
        self.assertEqual(self.titles('returned.tavlin'),
                         ['1 Spring', '1.1 Sow', '1.2 Weeds', '1.2.1 thistles', '2 Summer'])

    def test_search_with_rg(self):
        self.needs('rg')
        self.save('Garden/beds.tavlin', [Item('Weeds', kids=[Item('Pull Thistles')])])
        self.save('Garden/old/a b.tavlin', [Item('x', note='no thistle')])
        self.save('Garden/none.tavlin', [Item('roses')])
        (self.folder / 'Garden/plain.txt').write_text('a thistle\n')
        self.assertEqual(sorted(self.cook('printf').splitlines()),
                         ['Garden/beds.tavlin:  1.1 Pull Thistles', 'Garden/old/a b.tavlin:    no thistle',
                          'Garden/plain.txt:a thistle'])

    def test_differences_in_git(self):
        git = [self.needs('git'), '-C', self.folder, '-c', 'user.name=A', '-c', 'user.email=a@b.c']
        environment = {**driver.ENVIRONMENT, 'GIT_CONFIG_GLOBAL': os.devnull, 'GIT_CONFIG_NOSYSTEM': '1'}
        file = self.save('todo.tavlin', [Item('milk'), Item('bread', checked=False)])
        for arguments in (['init', '-q'], ['add', 'todo.tavlin'], ['commit', '-q', '-m', 'first']):
            subprocess.run([*git, *arguments], check=True, env=environment)
        self.save('todo.tavlin', [Item('milk'), Item('bread'), Item('butter')])
        self.assertTrue(os.path.exists(file))
        lines = self.cook('git config').splitlines()
        self.assertEqual([line for line in lines if line[:1] in ' +-' and line[:3] not in ('+++', '---')],
                         [' milk', ' bread', '+butter'])

    def test_markdown_beside_each_document(self):
        for name in ('beds', 'a b', "it's", 'line\nbreak', '-x'):
            self.save('Garden/%s.tavlin' % name, [Item(name.split('\n')[0])])
            self.save('Garden/deep/%s.tavlin' % name, [Item('deep')])
        self.cook('find Garden')
        for name in ('beds', 'a b', "it's", 'line\nbreak', '-x'):
            self.assertIn(name.split('\n')[0].lstrip('-'), (self.folder / ('Garden/%s.md' % name)).read_text())
            self.assertEqual((self.folder / ('Garden/deep/%s.md' % name)).read_text(), '- deep\n')

    def test_ask_with_jq(self):
        self.needs('jq')
        self.save('todo.tavlin', [Item('open', checked=False, kids=[Item('done', checked=True)]),
                                  Item(rich('rich and done'), checked=True)])
        self.save('Garden/a.tavlin', [Item('one two')])
        self.save('Garden/b/c.tavlin', [Item('three')])
        self.assertEqual(self.cook('tavlin export --to=json'), 'done\nrich and done\n3\n')

    def test_a_page_and_a_pdf(self):
        chromium = self.needs('chromium')
        (self.folder / 'bin').mkdir()
        # tests may run as root, whom the browser refuses otherwise
        (self.folder / 'bin/chromium').write_text(
            '#!/bin/sh\nexec %s --no-sandbox --disable-gpu --disable-dev-shm-usage --user-data-dir=%s "$@"\n'
            % (chromium, self.folder / 'profile'))
        (self.folder / 'bin/chromium').chmod(0o755)
        self.save('garden.tavlin', [Item('Beds', kids=[Item('Peas')])])
        self.cook('tavlin export -o garden.html', says=lambda err: 'tavlin: ' not in err)
        self.assertIn('Peas', (self.folder / 'garden.html').read_text())
        pdf = (self.folder / 'garden.pdf').read_bytes()
        self.assertTrue(pdf.startswith(b'%PDF-'))
        self.assertGreater(len(pdf), 3000)

    def test_there_are_no_others(self):
        self.assertEqual(len(recipes()), 10)


if __name__ == '__main__':
    driver.main()
