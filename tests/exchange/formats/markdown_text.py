"""What a CommonMark reader shows of an outline: the items, character by character with their looks.

    shown(markdown)       [Shown(level, mark, title, notes)], read by cmark-gfm and html5lib
"""
import collections
import subprocess

import html5lib

Shown = collections.namedtuple('Shown', 'level mark title notes')
LOOKS = {'strong': 'bold', 'em': 'italic', 'del': 'struck', 'code': 'fixed'}
EXTENSIONS = ('table', 'strikethrough', 'tasklist', 'autolink')
HTML = '{http://www.w3.org/1999/xhtml}'
RETURN = '\ue00d'  # stands for a carriage return


def name_of(node):
    return node.tag[len(HTML):] if isinstance(node.tag, str) else 'comment'


def html_of(markdown, extensions=EXTENSIONS):
    arguments = [part for name in extensions for part in ('-e', name)]
    return subprocess.run(['cmark-gfm', '--unsafe', '-t', 'html', *arguments], input=markdown,
                          capture_output=True, check=True, timeout=120).stdout.decode('utf-8')


class Text(list):
    """[(character, frozenset of looks)]"""

    def add(self, text, looks):
        # what follows <br> in the source is one line feed that nothing shows
        if text and self and self[-1] == 'break':
            self[-1] = ('\n', looks)
            text = text[1:] if text.startswith('\n') else text
        self.extend(('\r' if c == RETURN else c, looks) for c in text or '')

    def plain(self):
        return ''.join(c for c, _ in self)


def inline(node, looks, text):
    """The element's text; links are ('link', where)."""
    name = name_of(node)
    if name == 'comment':
        return
    if name == 'br':
        text.append('break')
        return
    if name in LOOKS:
        looks = looks | {LOOKS[name]}
    elif name == 'a':
        looks = looks | {('link', node.get('href'))}
    text.add(node.text, looks)
    for child in node:
        inline(child, looks, text)
        text.add(child.tail, looks)


def item_of(li, level):
    title, notes, mark, has_title = Text(), [], None, False
    blocks = [li]
    head = Text()
    head.add(li.text, frozenset())
    kids = []
    for child in li:
        name = name_of(child)
        if name == 'ul':
            if head and head[-1][0] == '\n':
                head.pop()  # before the list below
            kids = list(child)
            continue
        if name == 'input':
            mark = child.get('checked') is not None
            tail = child.tail or ''
            head.clear()
            head.add(tail[1:], frozenset())
            continue
        if name == 'p':
            text = Text()
            first = child[0] if len(child) else None
            if first is not None and name_of(first) == 'input' and not child.text:
                mark = first.get('checked') is not None
                text.add((first.tail or '')[1:], frozenset())
                for part in list(child)[1:]:
                    inline(part, frozenset(), text)
                    text.add(part.tail, frozenset())
            else:
                inline(child, frozenset(), text)
            if has_title:
                notes.append(text)
            else:
                title, has_title = text, True
            continue
        if name == 'comment' and all(part == ('\n', frozenset()) for part in head):
            has_title = True
            head.clear()
            continue
        inline(child, frozenset(), head)
        head.add(child.tail, frozenset())
    if not has_title:
        title = head
    return Shown(level, mark, title, notes), kids


def shown(markdown, extensions=EXTENSIONS):
    # the reader of HTML would make line feeds of carriage returns
    page = html5lib.parse(html_of(markdown, extensions).replace('\r', RETURN))
    body = page.find(HTML + 'body')
    result = []
    stack = []
    for ul in reversed(body.findall(HTML + 'ul')):
        stack += [(li, 0) for li in reversed(list(ul))]
    while stack:
        li, level = stack.pop()
        item, kids = item_of(li, level)
        result.append(item)
        stack += [(kid, level + 1) for kid in reversed(kids)]
    return result
