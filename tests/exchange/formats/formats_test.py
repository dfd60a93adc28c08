"""Plain text and OPML: what independent readers find, what comes back, and what is refused."""
import pathlib
import random
import sys
import xml.etree.ElementTree as xml

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent.parent / 'outline'))
import driver
import nasty
import yaml
from driver import Item


def paired(text):
    return text.encode('utf-16-le', 'surrogatepass').decode('utf-16-le', 'replace')


def xml_text(text):
    """The text with what XML has no place for replaced, and how much that was."""
    fine = paired(text)
    result = ''.join('\ufffd' if c in '\ufffe\uffff' or (c < ' ' and c not in '\t\n\r') else c
                     for c in fine)
    lost = sum(a != b for a, b in zip(fine, result))
    lost += fine.count('\ufffd') - text.count('\ufffd')
    return result, lost


def random_items(dice, count):
    items, tops = [], []
    for _ in range(count):
        item = Item(nasty.text(dice), note=nasty.text(dice) if dice.random() < 0.5 else None,
                    expanded=dice.random() < 0.5)
        parent = dice.choice(items[-20:]) if items and dice.random() < 0.6 else None
        (parent.kids if parent else tops).append(item)
        items.append(item)
    return tops


def read_text(content):
    """The format as it is described, from its own words: [(level, title, note)]."""
    names = {'\\\\': '\\', '\\t': '\t', '\\n': '\n', '\\r': '\r'}

    def plain(text):
        out, i = '', 0
        while i < len(text):
            pair = text[i:i + 2]
            out += names.get(pair, text[i])
            i += 2 if pair in names else 1
        return out
    items = []
    lines = content.split('\n')
    assert lines.pop() == ''
    for line in lines:
        level = len(line) - len(line.lstrip('\t'))
        line = line[level:]
        if line.startswith('> '):
            assert level == items[-1][0] + 1
            items[-1][2].append(plain(line[2:]))
        else:
            items.append((level, plain(line[1:] if line.startswith('\\>') else line), []))
    return [(level, title, '\n'.join(note)) for level, title, note in items]


class Text(driver.Case):
    def test_what_is_written_and_what_comes_back(self):
        dice = random.Random(3)
        for tops in [[Item(t, note=t, kids=[Item(t)]) for t in nasty.TEXTS],
                     *(random_items(dice, 400) for _ in range(4)), [Item('\ufeffa')]]:
            path = self.save('d.tavlin', tops)
            first = driver.run('export', '--to=text', path)
            content = first.raw.decode('utf-8')
            if content.startswith('\ufeff'):
                content = content[1:]
            want = [(p.count('.'), paired(i.title or ''), paired(i.note or ''))
                    for p, i in driver.order(tops)]
            self.assertEqual(read_text(content), want)
            (self.folder / 'd.txt').write_bytes(first.raw)
            self.ok('import', '-f', '-o', self.folder / 'b.tavlin', self.folder / 'd.txt')
            self.assertEqual(self.ok('export', '--to=text', self.folder / 'b.tavlin').encode(),
                             first.raw)

    def into_text(self, content):
        source = self.folder / 'in.txt'
        source.write_bytes(content)
        back = self.folder / 'back.tavlin'
        self.ok('import', '-f', '-o', back, source)
        return self.ok('export', '--to=text', back)

    def test_files_of_others(self):
        self.assertEqual(self.into_text(b'a\r\n\tb\r\n\t\t> note\r\n'), 'a\n\tb\n\t\t> note\n')
        self.assertEqual(self.into_text(b'\xef\xbb\xbfa\n>\n> b'), 'a\n\t> \n\t> b\n')
        self.assertEqual(self.into_text('a\n\tü\n'.encode('utf-16')), 'a\n\tü\n')
        self.assertEqual(self.into_text(b'C:\\dir\n'), 'C:\\\\dir\n')
        self.assertEqual(self.into_text(b''), '')
        self.assertEqual(self.into_text(b'\n\n'), '\n\n')

    def test_refusals(self):
        for content, says in ((b'a\n\t\tb\n', 'line 2: more than a level deeper'),
                              (b'\ta\n', 'line 1: a first line that is indented'),
                              (b'> a\n', 'line 1: a note without an item'),
                              (b'a\n\xff\n', 'line 2: not UTF-8')):
            source = self.folder / 'bad.txt'
            source.write_bytes(content)
            self.fails('import', '-o', self.folder / 'bad.tavlin', source, says=says)
            self.assertFalse((self.folder / 'bad.tavlin').exists())


class Opml(driver.Case):
    def test_what_is_written_and_what_comes_back(self):
        dice = random.Random(4)
        for tops in [[Item(t, note=t, kids=[Item(t)]) for t in nasty.TEXTS],
                     *(random_items(dice, 400) for _ in range(4))]:
            title = nasty.text(dice)
            path = self.save('d.tavlin', tops, {'title': title, 'authors': ['A&B']})
            first = driver.run('export', '--to=opml', path)
            tree = xml.fromstring(first.raw)
            lost = xml_text(title)[1]
            want = []
            for p, item in driver.order(tops):
                texts = [xml_text(x or '') for x in (item.title, item.note)]
                lost += texts[0][1] + texts[1][1]
                want.append((p.count('.'), texts[0][0], texts[1][0]))
            got, stack = [], [(x, 0) for x in reversed(tree.find('body'))]
            while stack:
                node, level = stack.pop()
                got.append((level, node.get('text'), node.get('_note', '')))
                stack += [(x, level + 1) for x in reversed(node)]
            self.assertEqual(got, want)
            self.assertEqual(tree.findtext('head/title'), xml_text(title)[0])
            self.assertEqual(tree.findtext('head/ownerName'), 'A&B')
            noun = 'character has' if lost == 1 else 'characters have'
            says = 'tavlin: %s: %d %s no place in opml\n' % (path, lost, noun) if lost else ''
            self.assertEqual(first.err, says)
            (self.folder / 'd.opml').write_bytes(first.raw)
            self.ok('import', '-f', '-o', self.folder / 'b.tavlin', self.folder / 'd.opml')
            self.assertEqual(driver.run('export', '--to=opml', self.folder / 'b.tavlin').raw, first.raw)

    def test_marks_and_expansion(self):
        path = self.save('d.tavlin', [
            Item('1', expanded=True, kids=[Item('1.1', checked=True), Item('1.2', kids=[
                Item('x', expanded=True, kids=[Item('y')])])]),
            Item('2', shows=False), Item('3', expanded=True, kids=[Item('3.1')])])
        tree = xml.fromstring(self.ok('export', '--to=opml', path))
        self.assertEqual(tree.findtext('head/expansionState'), '1, 5')
        self.assertEqual([x.get('_status') for x in tree.iter('outline')],
                         ['indeterminate', 'checked', 'unchecked', 'unchecked', 'unchecked', None,
                          'unchecked', 'unchecked'])
        self.ok('export', '-o', self.folder / 'd.opml', path)
        self.ok('import', '-o', self.folder / 'b.tavlin', self.folder / 'd.opml')
        self.assertEqual(self.ok('show', self.folder / 'b.tavlin'), self.ok('show', path))
        self.assertEqual(self.ok('show', '--expanded', self.folder / 'b.tavlin'),
                         self.ok('show', '--expanded', path))

    def import_opml(self, content):
        source = self.folder / 'in.opml'
        source.write_bytes(content if isinstance(content, bytes) else content.encode())
        back = self.folder / 'back.tavlin'
        result = driver.run('import', '-f', '-o', back, source)
        shown = self.ok('show', back) if result.status == 0 else ''
        return result.status, shown, result.err

    def test_files_of_others(self):
        for content, want, lost in (
                ('<opml><body><outline text="a"><outline title="b"/></outline></body></opml>', 'a\n  b\n', 0),
                ('<!DOCTYPE opml [<!ENTITY e "x&#38;amp;y">]><opml><body><outline text="&e;&#x41;"/></body></opml>', 'x&yA\n', 0),
                ('<o:opml xmlns:o="urn:o"><o:body><o:outline text="a"/></o:body></o:opml>', 'a\n', 0),
                ('<opml xmlns:e="urn:e"><body><outline text="a" e:x="1" type="rss"/><e:y>z</e:y></body></opml>', 'a\n', 3),
                ('<?xml version="1.0" encoding="ISO-8859-1"?><opml><body><outline text="\xfc"/></body></opml>'.encode('latin-1'), 'ü\n', 0),
                ('<?xml version="1.0" encoding="windows-1252"?><opml><body><outline text="\u20ac"/></body></opml>'.encode('cp1252'), '€\n', 0),
                ('<?xml version="1.0" encoding="Shift_JIS"?><opml><body><outline text="日本"/></body></opml>'.encode('shift_jis'), '日本\n', 0),
                ('<?xml version="1.0" encoding="UTF-16"?><opml><body><outline text="ü"/></body></opml>'.encode('utf-16'), 'ü\n', 0),
                ('<opml><body><outline text="a" text2="b" title="c"/>words</body></opml>', 'a\n', 3),
                ('<opml/>', '', 0)):
            status, shown, err = self.import_opml(content)
            self.assertEqual((status, shown), (0, want), (content, err))
            counts = [int(word) for word in err.split() if word.isdigit()]
            self.assertEqual(sum(counts), lost, (content, err))

    def test_refusals(self):
        secret = self.folder / 'secret'
        secret.write_text('secret')
        bomb = '<!DOCTYPE opml [<!ENTITY a "%s">' % ('x' * 1000) + ''.join(
            '<!ENTITY %s "%s">' % (chr(98 + i), ('&%s;' % chr(97 + i)) * 20) for i in range(8)) + \
            ']><opml><body><outline text="&i;"/></body></opml>'
        external = '<!DOCTYPE opml [<!ENTITY e SYSTEM "file://%s">]><opml><head><title>&e;</title></head></opml>' % secret
        for content, says in (
                (bomb, 'in.opml: line 1: limit on input amplification'), (external, 'external entity'),
                (external.replace('<head><title>&e;</title></head>', '<body><outline text="&e;"/></body>'), 'line 1'),
                ('<!DOCTYPE opml SYSTEM "opml.dtd"><opml><body><outline text="a&nbsp;b"/></body></opml>', '"nbsp" is not declared'),
                ('<opml><body><outline text="&nbsp;"/></body></opml>', 'undefined entity'),
                ('<html/>', 'not OPML'), ('', 'no element'), ('<opml>', 'no element'), ('<opml><a></opml>', 'mismatched tag')):
            status, _, err = self.import_opml(content)
            self.assertEqual(status, 2, content[:200])
            self.assertIn(says, err)
            self.assertNotIn('secret\n', err)


class Deep(driver.Case):
    def test_a_million_levels(self):
        levels = 1000000
        source = self.folder / 'deep.opml'
        source.write_text('<opml><body>' + '<outline text="x">' * levels + '</outline>' * levels + '</body></opml>')
        deep = self.folder / 'deep.tavlin'
        self.ok('import', '-o', deep, source, timeout=300)
        out = self.folder / 'out'
        self.ok('export', '--to=opml', '-o', out, deep, timeout=300)
        for name in ('text', 'markdown'):
            self.fails('export', '--to=' + name, deep, says='too deep for ' + name, timeout=300)
        (self.folder / 'deep.md').write_text('> ' * levels + 'x\n')
        self.ok('import', '-o', self.folder / 'md.tavlin', self.folder / 'deep.md', timeout=300)

    def test_thousands_of_levels(self):
        top = Item('x', expanded=True)
        item = top
        for _ in range(3000):
            item.kids = [Item('x', expanded=True)]
            item = item.kids[0]
        path = self.save('d.tavlin', [top])
        for name in ('text', 'markdown'):
            out = self.folder / 'out'
            back = self.folder / 'back.tavlin'
            self.ok('export', '--to=' + name, '-o', out, path)
            self.ok('import', '--from=' + name, '-f', '-o', back, out)
            self.assertEqual(self.ok('show', back), self.ok('show', path))


class FrontMatter(driver.Case):
    def test_properties(self):
        dice = random.Random(5)
        for _ in range(40):
            properties = {key: nasty.text(dice) for key in ('title', 'copyright', 'subject', 'comment')
                          if dice.random() < 0.7}
            for key in ('authors', 'organizations', 'keywords'):
                if dice.random() < 0.7:
                    properties[key] = [nasty.text(dice) for _ in range(dice.randint(0, 3))]
            path = self.save('d.tavlin', [Item('a')], properties)
            out = driver.run('export', '--to=markdown', path).raw
            front = out.split(b'---\n')[1].decode() if properties else '{}'
            want = {key: [paired(x) for x in value] if isinstance(value, list) else paired(value)
                    for key, value in properties.items()}
            self.assertEqual(yaml.safe_load(front), want)
            (self.folder / 'd.md').write_bytes(out)
            self.ok('import', '-f', '-o', self.folder / 'b.tavlin', self.folder / 'd.md')
            self.assertEqual(driver.run('export', '--to=markdown', self.folder / 'b.tavlin').raw, out)

    def properties_of(self, front):
        (self.folder / 'f.md').write_text('---\n' + front + '---\n- a\n')
        result = driver.run('import', '-f', '-o', self.folder / 'f.tavlin', self.folder / 'f.md')
        self.assertEqual(result.status, 0, result)
        out = self.ok('export', '--to=markdown', self.folder / 'f.tavlin')
        return yaml.safe_load(out.split('---\n')[1]) if out.startswith('---') else {}, result.err

    def test_what_people_write(self):
        for front, want, lost in (
                ('title: 12\nkeywords: a, b\n', {'title': '12', 'keywords': ['a', 'b']}, 0),
                ('author: X\ndate: 2020-01-01\n', {'authors': ['X']}, 1),
                ('authors: [A, "B"]\nkeywords:\n  - x\n  - {y: z}\n', {'authors': ['A', 'B'], 'keywords': ['x']}, 1),
                ('title: >\n  a\n  b\ncomment: |\n  c\n  d\n', {'title': 'a b\n', 'comment': 'c\nd\n'}, 0),
                ('title: &t T\nsubject: *t\ncomment:\n', {'title': 'T', 'subject': 'T'}, 0),
                ('nested:\n  a: [b, {c: d}]\n', {}, 1)):
            got, err = self.properties_of(front)
            self.assertEqual(got, want, front)
            self.assertEqual(sum(int(word) for word in err.split() if word.isdigit()), lost, err)

    def test_refusals(self):
        for front, says in (('a: [b\n', 'front matter'), ('title: a: b\n', 'line 2: front matter'),
                            ('a: ' + '[' * 100000 + '\n', 'nested too deeply')):
            source = self.folder / 'bad.md'
            source.write_text('---\n' + front + '---\n')
            self.fails('import', '-o', self.folder / 'bad.tavlin', source, says=says)


if __name__ == '__main__':
    driver.main()
