"""Markdown: what an independent CommonMark reader shows, and what comes back."""
import pathlib
import random
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent.parent / 'outline'))
import driver
import markdown_text
import nasty
from driver import Item

EXTENSIONS = ('table', 'strikethrough', 'tasklist')
FONTS = {(False, False, False): 'Helvetica', (True, False, False): 'Helvetica-Bold',
         (False, True, False): 'Helvetica-Oblique', (True, True, False): 'Helvetica-BoldOblique',
         (False, False, True): 'Courier', (True, False, True): 'Courier-Bold',
         (False, True, True): 'Courier-Oblique', (True, True, True): 'Courier-BoldOblique'}


def as_shown(text):
    """Characters that Markdown has no place for are replaced."""
    text = text.replace('\0', '\ufffd').encode('utf-16-le', 'surrogatepass').decode('utf-16-le', 'replace')
    return text


# what stands beside delimiters: letters, punctuation, blanks, and what readers do not agree on
BESIDE = list('a2(.*_`~[]<>&!\\-#:)') + [
    '\n', '\n', ' ', '\t', '\r', '\x85', '\x9f', '\u2028', '\u200b', '\xa0', '\ufffe', 'é', '“', '€', '日', '😀',
    'ab', 'a b', '\n\n', 'a\n', '\nb', 'www.', 'http://']


class Case(driver.Case):
    maxDiff = None


class Plain(Case):
    def check(self, items):
        path = self.save('d.tavlin', items)
        result = driver.run('export', '--to=markdown', path)
        self.assertEqual(result.status, 0, result)
        for extensions in ((), markdown_text.EXTENSIONS):
            got = markdown_text.shown(result.raw, extensions)
            expected = list(driver.order(items))
            faults = []
            for (_, item), shown in zip(expected, got):
                note = '\n\n'.join(part.plain() for part in shown.notes)
                for want, has in ((item.title, shown.title.plain()), (item.note, note)):
                    # HTML has a line feed behind an item anyway
                    if has.rstrip('\n') != as_shown(want or '').rstrip('\n'):
                        faults.append((want, has))
            self.assertEqual(faults[:3], [], extensions)
            self.assertEqual(len(got), len(expected))
        self.comes_back(path, result.raw, items)

    def comes_back(self, path, markdown, items):
        source = self.folder / 'd.md'
        source.write_bytes(markdown)
        back = self.folder / 'back.tavlin'
        self.ok('import', '--force', '-o', back, source)
        again = driver.run('export', '--to=markdown', back)
        self.assertEqual(nasty.first_difference(again.raw, markdown) or (), ())
        plain = driver.run('export', '--to=text', path)
        want = plain.raw.replace(b'\0', b'\xef\xbf\xbd')
        got = driver.run('export', '--to=text', back).raw
        self.assertEqual(nasty.first_difference(got, want) or (), ())

    def test_nasty_texts(self):
        self.check([Item(text, note=text, kids=[Item(text)]) for text in nasty.TEXTS])

    def test_random_texts(self):
        dice = random.Random(20)
        for _ in range(6):
            items = []
            for _ in range(300):
                note = nasty.text(dice) if dice.random() < 0.5 else None
                item = Item(nasty.text(dice), note=note)
                parent = dice.choice(items[-20:]) if items and dice.random() < 0.5 else None
                item.top = parent is None
                (parent.kids if parent else []).append(item)
                items.append(item)
            self.check([item for item in items if item.top])


    def test_every_character(self):
        pieces = [chr(c) for c in range(0x3000)]
        pieces += [chr(c) for c in range(0x3000, 0x110000, 61)]
        pieces += [chr(plane << 16 | low) for plane in range(17) for low in (0xFFFE, 0xFFFF)]
        self.check([Item('%sa%sb%s' % (c, c, c)) for c in pieces])


class Rich(Case):
    def rich(self, runs):
        """Attributed text of (text, bold, italic, fixed, struck, link)."""
        archives = driver.archives
        stored = []
        for text, bold, italic, fixed, struck, link in runs:
            attributes = {'NSFont': archives.Instance('NSFont', {
                'NSName': archives.Value(FONTS[bold, italic, fixed]), 'NSSize': 13.0,
                'NSfFlags': 16})}
            if struck:
                attributes['NSStrikethrough'] = 1
            if link:
                attributes['NSLink'] = link
            stored.append((len(text.encode('utf-16-le')) // 2, archives.dictionary(attributes)))
        text = ''.join(run[0] for run in runs)
        if len(stored) == 1:
            return archives.attributed(text, stored[0][1])
        return archives.attributed(text, *stored)

    def expected(self, runs):
        result = []
        for text, bold, italic, fixed, struck, link in runs:
            looks = {look for look, on in (('bold', bold), ('italic', italic), ('fixed', fixed),
                                           ('struck', struck)) if on}
            result += [(c, frozenset(looks)) for c in as_shown(text)]
        return result

    def random_runs(self, dice):
        runs = []
        for _ in range(dice.randint(1, 6)):
            text = nasty.text(dice, lambda d: d.randint(1, 4)) or 'x'
            link = dice.choice(['', '', '', 'http://x.y/(a) b', 'mailto:a_b*c@d', 'x<y>&amp;\\z\n'])
            runs.append((as_shown(text), dice.random() < 0.4, dice.random() < 0.4,
                         dice.random() < 0.3, dice.random() < 0.3, link))
        return runs

    def test_random_looks(self):
        dice = random.Random(7)
        for _ in range(4):
            all_runs = [self.random_runs(dice) for _ in range(400)]
            path = self.save('d.tavlin', [Item(self.rich(runs)) for runs in all_runs])
            result = driver.run('export', '--to=markdown', path)
            result.raw.decode('utf-8')
            got = markdown_text.shown(result.raw, EXTENSIONS)
            self.assertEqual(len(got), len(all_runs))
            lines = result.out.split('\n- ')
            for i, (runs, shown) in enumerate(zip(all_runs, got)):
                with self.subTest(runs=runs, markdown=lines[i]):
                    self.compare(runs, shown)
            again = self.again(result.raw)
            for runs, item in zip(all_runs, markdown_text.shown(again, EXTENSIONS)):
                with self.subTest(runs=runs):
                    self.compare(runs, item)
            # line breaks have the look of the text around them by now
            self.assertEqual(nasty.first_difference(self.again(again), again) or (), ())

    def shown_titles(self, all_runs):
        """What is shown of titles, and the number of attributes that were lost."""
        path = self.save('d.tavlin', [Item(self.rich(runs)) for runs in all_runs])
        result = driver.run('export', '--to=markdown', path)
        got = markdown_text.shown(result.raw, EXTENSIONS)
        self.assertEqual(len(got), len(all_runs), result.out)
        return got, result

    def test_short_looks_beside_each_other(self):
        """Where a delimiter counts depends on the characters on both sides of it."""
        dice = random.Random(11)
        for _ in range(3):
            all_runs = [[(''.join(dice.choice(BESIDE) for _ in range(dice.choice([1, 1, 1, 2, 2, 3]))),
                          dice.random() < 0.4, *(dice.random() < 0.3 for _ in range(3)),
                          dice.choice(['', '', '', '', 'u', 'v'])) for _ in range(dice.randint(1, 5))]
                        for _ in range(4000)]
            got, result = self.shown_titles(all_runs)
            lines = ('\n' + result.raw.decode()).split('\n- ')[1:]
            for runs, shown, line in zip(all_runs, got, lines):
                with self.subTest(runs=runs, markdown=line):
                    self.compare(runs, shown)

    def test_looks_that_readers_took_for_others(self):
        plain, bold, fixed, struck = (False,) * 4, (True,) + (False,) * 3, (True, False, True, False), (
            False, False, False, True)
        for runs in ([('2', *plain, ''), ('a\n', *fixed, ''), ('b', *plain, '')],
                     [('b', *plain, ''), ('\na', *fixed, ''), ('2', *plain, '')],
                     [('(', *bold, ''), ('a', *struck, ''), ('b', *plain, '')],
                     [('b', *plain, ''), ('a', *struck, ''), ('(', *bold, '')],
                     [('a', *struck, ''), ('\x85', *plain, ''), ('b', *struck, '')],
                     [('wow!', *plain, ''), ('link', *plain, 'http://x.y/')]):
            with self.subTest(runs=runs):
                self.compare(runs, self.shown_titles([runs])[0][0])

    def test_fixed_width_of_breaks_is_counted_where_it_is_lost(self):
        code, plain = (False, False, True, False, ''), (False,) * 4 + ('',)
        bold = (True, *code[1:])
        for runs, lost in (([('a\nb', *code)], 0), ([('a\n', *code), ('b', *plain)], 1),
                           ([('a', *plain), ('\nb', *code)], 1), ([('\n', *code)], 1),
                           ([('a', *code), ('\n', *plain), ('b', *code)], 0),
                           ([('a\n', *code), ('b', *bold)], 0), ([('a\n', *bold), ('b', *code)], 1),
                           ([('a\rb', *code)], 1), ([('a', *plain), ('\n', *code), ('b', *code)], 1)):
            noun = 'attribute of text has' if lost == 1 else 'attributes of text have'
            path = self.save('d.tavlin', [Item(self.rich(runs))])
            err = driver.run('export', '--to=markdown', path).err
            self.assertEqual(err, 'tavlin: %s: %d %s no place in markdown\n' % (path, lost, noun)
                             if lost else '', runs)
        counts = []
        for look in (code, plain):
            note = self.rich([('a\n\n', *look), ('b', *plain)])
            err = driver.run('export', '--to=markdown', self.save('d.tavlin', [Item('x', note=note)])).err
            counts.append(sum(int(word) for word in err.split() if word.isdigit()))
        self.assertEqual(counts[0], counts[1] + 1)

    def test_zeros_are_counted(self):
        path = self.save('d.tavlin', [Item(self.rich([('x', *(False,) * 4, 'http://x.y/\0')]))])
        self.assertIn(': 1 character has', driver.run('export', '--to=markdown', path).err)
        source = self.folder / 'zeros.md'
        source.write_bytes(b'- a\0b\0\n')
        result = driver.run('import', '-o', self.folder / 'zeros.tavlin', source)
        self.assertEqual(result.err, 'tavlin: %s: 2 characters have no place in a document\n' % source)

    def compare(self, runs, shown):
        want = self.expected(runs)
        self.assertEqual(shown.title.plain().rstrip('\n'), ''.join(c for c, _ in want).rstrip('\n'))
        for (c, looks), (_, has) in zip(want, shown.title):
            if c in '\n\r':
                continue  # has no look of its own
            self.assertEqual({x for x in has if isinstance(x, str)}, looks)
        want_links = [bool(run[5]) for run in runs for _ in as_shown(run[0])]
        for i, (c, has) in enumerate(shown.title):
            if c not in '\n\r':
                self.assertEqual(any(isinstance(x, tuple) for x in has), want_links[i])

    def again(self, markdown):
        source = self.folder / 'd.md'
        source.write_bytes(markdown)
        back = self.folder / 'back.tavlin'
        self.ok('import', '--force', '-o', back, source)
        return driver.run('export', '--to=markdown', back).raw


if __name__ == '__main__':
    driver.main()
