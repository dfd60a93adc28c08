"""Texts made of what formats give a meaning."""

PIECES = ['*', '**', '***', '_', '__', '`', '``', '~', '~~', '[', ']', '](', ')', '<', '>', '&', '&amp;', '&#35;',
          '&copy', '&copy;', '<b>', '</b>', '<!--', '-->', '<!-- -->', '<?x', '<!A b>', '<a@b.c>', '<http://x.y>',
          'http://www.x.y/a_b*c', 'https://a.b', 'www.x.y', 'www.a_b_c.d', 'a@b.c', 'ftp://x', '1.', '1)', '12. ', '#', '## ', '-', '- ',
          '+ ', '* ', '---', '===', '=', '```', '~~~', '|', '|-|', ':-', '- [ ] ', '[x] ', '[ ]', '[^1]', '[a]: b', '![',
          '\\', '\\\\', '\n', '\n', '\n\n', '\t', ' ', '  ', '    ', '\r', '\r\n', '\x0b', '\x0c', '\x85', '\u2028', '\u2029',
          '\xa0', '\u3000', '\u200b', '\ufeff', '\xad', 'a', 'b', 'word', 'ä', '日本', '👍🏽', '“', '€', '0', '9', '"', "'", '%', '{', '}',
          '\x00', '\x01', '\x1b[31m', '\x7f', '\ufffe', '\uffff', '\ud800', '\udc00', '😀', 'e\u0301', '$', ':smile:', '>', '> ', '--', '...']

TEXTS = ['', ' ', '\t', '\n', '\n\n', ' a', 'a ', 'a\n', '\na', 'a\n\n', 'a\n\n\nb', '\\', 'a\\', 'a\\\nb', '1. a', '1) a', '1.', '2026. year',
         '# a', '#a', 'a\n# b', 'a\n===', 'a\n---', 'a\n- b', 'a\n1. b', 'a\n    b', 'a\n\n    b', 'a\n```\nb\n```', '```', '~~~',
         '> a', 'a\n> b', '- a', '+ a', '* a', '- - a', '---', '***', '___', '* * *', '[x] a', '[ ] a', '[X]', '[a]: b', '[a](b)',
         '![a](b)', '[a][b]', '[^1]', '[^1]: a', '<b>a</b>', '<!-- a -->', '<!-- -->', '<div>', '<?a?>', '&amp;', '&#65;', '&copy;', '&',
         'R&D', 'a & b', 'a&b;', '&a', 'snake_case_word', '_a_', '*a*', '**a**', '`a`', '`` ` ``', '~~a~~', '~a~', 'a|b\n-|-\nc|d',
         '| a |\n| - |', 'http://x.y', 'http://x.y/a_b', 'www.x.y', 'www.x_y.z', 'a@b.c', '<http://x.y>', 'a\u2028b', 'a\x85b', '\ufeffa',
         '\ufeff', 'a\r', 'a\rb', 'a\r\nb', '\x00', 'a\x00b', '\ud83d', '\udc4d', 'x' * 100000, '*' * 5000, '[' * 3000, 'a\n' * 2000 + 'b',
         '`' * 90, ''.join('`' * n + 'a' for n in range(90)), 'a  b', 'a\tb', '\ta', 'a\t', '--- a', 'key: value', '---\na: b\n---']


def text(dice, length=lambda dice: dice.choice([0, 1, 1, 2, 3, 4, 6, 9])):
    return ''.join(dice.choice(PIECES) for _ in range(length(dice)))


def first_difference(one, other):
    """None, or the first lines that differ."""
    if one == other:
        return None
    ones, others = one.split(b'\n'), other.split(b'\n')
    for i, (a, b) in enumerate(zip(ones, others)):
        if a != b:
            at = next((k for k, (x, y) in enumerate(zip(a, b)) if x != y), min(len(a), len(b)))
            at = max(at - 80, 0)
            return i + 1, a[at:at + 160], b[at:at + 160]
    return len(ones), len(others)
