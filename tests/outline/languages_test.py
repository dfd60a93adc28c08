"""The tables of help and messages: complete in every language, and used."""
import pathlib
import re
import unicodedata

import driver

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
LANGUAGES = {'de': 'de_DE', 'fr': 'fr_FR', 'es': 'es_ES', 'ja': 'ja_JP'}
STRING = r'"(?:[^"\\]|\\.)*"'
LITERAL = re.compile(r'\s*%s(?:\s*%s)*\s*' % (STRING, STRING))


def arguments(source, begin):
    """The arguments of a call, from behind its opening parenthesis."""
    found, depth, at = [''], 0, begin
    while depth or source[at] != ')':
        token = re.compile(STRING + '|.', re.DOTALL).match(source, at)[0]
        depth += (token in '([{') - (token in ')]}') if len(token) == 1 else 0
        if token == ',' and not depth:
            found.append('')
        else:
            found[-1] += token
        at += len(token)
    return found


def text_of(literal):
    return ''.join(string[1:-1] for string in re.findall(STRING, literal))


def passing(source, name, begin):
    """The function or lambda before `begin` that has a parameter of this name: its own name, the
    place behind the parenthesis of its parameters, and which of them it is."""
    heads = re.finditer(r'(\w+)(?: = \[[^\]]*\])?\(([^()]*\bconst char\* %s\b[^()]*)\)' % name,
                        source[:begin])
    head = list(heads)[-1]
    index = [parameter.split()[-1] for parameter in head[2].split(',')].index(name)
    return head[1], head.start(2), index


def texts_in(source):
    """What a source passes to localized(), itself or by a function that takes the text."""
    calls = [(match.end(), 0) for match in re.finditer(r'\blocalized\(', source)]
    known = set()
    texts = set()
    while calls:
        begin, index = calls.pop()
        argument = arguments(source, begin)[index]
        if LITERAL.fullmatch(argument):
            texts.add(text_of(argument))
            continue
        function, head, index = passing(source, argument.strip(), begin)
        if (function, index) not in known:
            known.add((function, index))
            calls += [(match.end(), index) for match in re.finditer(r'\b%s\(' % function, source)
                      if match.end() != head]
    return texts


def wanted():
    texts = set()
    for folder in ('outline', 'editor'):
        for path in sorted((ROOT / folder).rglob('*.[ch]*')):
            if path.suffix in ('.cpp', '.h'):
                texts |= texts_in(path.read_text())
    return texts


def entries(language, table='Outline'):
    """Keys and texts of a table, in its order."""
    content = (ROOT / 'resources' / (language + '.lproj') / (table + '.strings')).read_text()
    content = re.sub(r'/\*.*?\*/|^//[^\n]*', '', content, flags=re.DOTALL | re.MULTILINE)
    entry = r'\s*(%s) = (%s);' % (STRING, STRING)
    rest = re.sub(entry, '', content)
    assert not rest.strip(), (language, rest)
    return [(key[1:-1], text[1:-1]) for key, text in re.findall(entry, content)]


def in_language(language):
    return {'LC_ALL': LANGUAGES[language] + '.UTF-8', 'LANGUAGE': language}


def cells(text):
    return sum(2 if unicodedata.east_asian_width(c) in 'WF' else 1 for c in text)


class Languages(driver.Case):
    def every_command(self):
        """The arguments before --help of all commands, read from the English help."""
        waiting, found = [()], []
        while waiting:
            command = waiting.pop()
            found.append(command)
            commands = self.ok(*command, '--help').partition('Commands:\n')[2].partition('\n\n')[0]
            waiting += [(*command, line.split()[0]) for line in commands.splitlines()]
        return found

    def test_texts_are_found_in_sources(self):
        self.assertEqual(texts_in('''\
            localized("one, (two) "
                      "three"); other("no");
            const auto add = [&](int x, const char* help) { y(localized(help)); };
            add(f(1, 2), "by a function");
            '''), {'one, (two) three', 'by a function'})
        self.assertLessEqual({'Usage:', 'Commands:', 'Leave out notes', 'Removes keywords', 'The note',
                              'Deletes items, with all below them', 'unknown option'}, wanted())

    def test_tables_have_exactly_the_texts(self):
        texts = wanted()
        for language in LANGUAGES:
            with self.subTest(language):
                table = entries(language)
                keys = [key for key, _ in table]
                self.assertEqual(len(keys), len(set(keys)), 'a key is there twice')
                self.assertEqual(texts - set(keys), set(), 'missing')
                self.assertEqual(set(keys) - texts, set(), 'unused')
                for key, text in table:
                    self.assertTrue(text.strip(), key)

    def test_what_is_typed_stays(self):
        names = re.compile(r'\bFILE~|\b(?:OUT|IN|JSON|HTML|RE2|bash|zsh|fish|tavlin help|2\.1\.3)\b|'
                           r'\.tavlin\b|(?<![\w-])--?[a-z]+|(?<![\w-])-(?=\s)')
        for language in LANGUAGES:
            with self.subTest(language):
                for key, text in entries(language):
                    self.assertEqual(sorted(names.findall(text)), sorted(names.findall(key)), key)
                table = dict(entries(language))
                self.assertIn(table['COMMAND'], table['tavlin help COMMAND tells more of each.'])

    def test_tables_are_in_the_same_order(self):
        keys = [key for key, _ in entries('de')]
        for language in LANGUAGES:
            self.assertEqual([key for key, _ in entries(language)], keys, language)

    def test_help_is_in_the_language(self):
        for language, (usage, command) in {
                'de': ('Aufruf: tavlin show [OPTION...] FILE...', 'Gibt Gliederungen als Text aus'),
                'fr': ('Utilisation\u00a0: tavlin show [OPTION...] FILE...',
                       'Affiche des plans sous forme de texte'),
                'es': ('Uso: tavlin show [OPCIÓN...] FILE...', 'Muestra esquemas como texto'),
                'ja': ('使い方: tavlin show [オプション...] FILE...',
                       'アウトラインをテキストとして出力する')}.items():
            with self.subTest(language):
                lines = self.ok('show', '--help', environment=in_language(language)).splitlines()
                self.assertEqual((lines[0], lines[2]), (command, usage))

    def test_help_has_the_same_lines_in_every_language(self):
        """Line by line what the English one has, translated, with descriptions in one column."""
        for command in self.every_command():
            english = self.ok(*command, '--help').splitlines()
            for language in LANGUAGES:
                with self.subTest(command=command, language=language):
                    table = dict(entries(language))
                    lines = self.ok(*command, '--help', environment=in_language(language)).splitlines()
                    self.assertEqual(len(lines), len(english))
                    for line, original in zip(lines[3:], english[3:]):
                        head, text = line[:28], line[28:]
                        if original.startswith('  ') and len(original) > 28 and original[27] == ' ':
                            self.assertEqual(head, original[:28])
                            self.assertEqual(cells(head), 28)
                            self.assertEqual(text, table[original[28:]])
                        else:
                            self.assertEqual(line, table.get(original, original))

    def test_messages_are_in_the_language(self):
        for language, message in {
                'de': 'unbekannter Befehl shwo; meinten Sie show?',
                'fr': 'commande inconnue shwo; vouliez-vous dire show?',
                'es': 'orden desconocida shwo; ¿quiso decir show?',
                'ja': '不明なコマンド: shwo; もしかして: show?'}.items():
            self.assertEqual(self.fails('shwo', environment=in_language(language)),
                             'tavlin: ' + message + '\n')

    def test_what_the_parser_says_is_in_the_language(self):
        for arguments, german, japanese in (
                (('show',), 'FILE fehlt', 'FILE が必要です'),
                (('show', '--depth=0', 'x'), '--depth: 0 liegt nicht zwischen 1 und', '--depth: 0 は 1 から'),
                (('show', '--checks=%2', 'x'), '--checks: %2 ist keines von {auto,always,never}',
                 '--checks: %2 は {auto,always,never}'),
                (('show', '--depth'), '--depth: N fehlt', '--depth: N が必要です'),
                (('show', '--depth=1', '--depth=2', 'x'), '--depth: höchstens 1-mal', '--depth: 指定できるのは'),
                (('find', '-l', '--json', 'x', 'y'), '--files-with-matches schließt --json aus',
                 '--files-with-matches と --json'),
                (('export', '--to=text', 'a', 'b'), 'überzähliges Argument: b', '余分な引数: b'),
                (('info', '--json=x', 'y'), 'diese Option nimmt keinen Wert: --json=x',
                 'このオプションには値を指定できません: --json=x'),
                (('keywords',), 'ein Befehl fehlt', 'コマンドが必要です')):
            for language, text in (('de', german), ('ja', japanese)):
                self.assertIn('tavlin: ' + text, self.fails(*arguments, environment=in_language(language)))

    def test_english(self):
        english = self.ok('show', '--help', environment={'LC_ALL': 'C.UTF-8'})
        self.assertTrue(english.startswith(
            'Prints outlines as text\n\nUsage: tavlin show [OPTION...] FILE...\n'), english)
        self.assertIn('      --no-notes            Leave out notes\n', english)
        for environment in ({'LC_ALL': 'C', 'LANGUAGE': 'de'}, {'LC_ALL': 'en_GB.UTF-8'},
                            {'LC_ALL': 'de_DE.UTF-8', 'LANGUAGE': 'en:de'},
                            {'LC_ALL': 'it_IT.UTF-8'},
                            {'LC_ALL': 'it_IT.UTF-8', 'LANGUAGE': 'it:en:de'}):
            self.assertEqual(self.ok('show', '--help', environment=environment), english, environment)


if __name__ == '__main__':
    driver.main()
