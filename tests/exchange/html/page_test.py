"""An exported page in a real browser.

    page_test.py JSON-CONVERT"""
import base64
import hashlib
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

try:
    import browser
except ImportError:
    browser = None

FOLDER = pathlib.Path(__file__).resolve().parent
CONVERT = sys.argv[1]
HOSTILE = '''{"tavlin":1,"properties":{"title":"</title><script>document.title='x'</script>"},"items":[
{"title":"<img src=http://127.0.0.1:9/a onerror=alert(1)>","note":"</ul></details><script>alert(2)</script>"},
{"title":{"text":"abcdef","runs":[{"length":1,"link":"javascript:alert(3)"},{"length":1,"link":"JaVaScRiPt:1"},
{"length":1,"link":"data:text/html,x"},{"length":1,"link":"https://e.example/?a=\\"><script>alert(4)</script>"},
{"length":1,"link":"HTTPS://E.example"},{"length":1,"link":"file:///etc/hosts","color":{"rgb":[1.0,0.0,0.0]}}]}},
{"title":"a\\u0000b\\u0001c\\u0085d\\ufffee\\ud83cf\\rg\\u000ch & <i>"}]}'''


def page_of(json, folder, *options):
    """A page of a document given as JSON."""
    source, document, page = folder / 'in.json', folder / 'in.tavlin', folder / 'page.html'
    source.write_text(json, encoding='utf-8')
    subprocess.run([CONVERT, 'import', source, document], check=True)
    page.write_bytes(subprocess.run([CONVERT, 'html', document, *options], check=True,
                                    capture_output=True).stdout)
    return page


class Pages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.folder = pathlib.Path(cls.scratch.name)
        cls.sample = (FOLDER / 'garden.json').read_text(encoding='utf-8')

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()


class Text(Pages):
    def test_the_policy_names_the_hashes_of_style_and_script(self):
        page = page_of(self.sample, self.folder).read_text(encoding='utf-8')
        for element, policy in (('style', 'style-src'), ('script', 'script-src')):
            content = re.search(f'<{element}>(.*?)</{element}>', page, re.S).group(1)
            wanted = base64.b64encode(hashlib.sha256(content.encode()).digest()).decode()
            self.assertIn(f"{policy} 'sha256-{wanted}'", page)

    def test_the_same_document_gives_the_same_bytes(self):
        first = page_of(self.sample, self.folder).read_bytes()
        self.assertEqual(page_of(self.sample, self.folder).read_bytes(), first)

    def test_nothing_is_named_that_would_be_loaded(self):
        page = page_of(self.sample, self.folder).read_text(encoding='utf-8')
        self.assertNotRegex(page, r'(?i)<(link|img|iframe|object|embed|base)\b|@import|url\(')

    def test_many_levels(self):
        count = 100000
        json = '{"tavlin":1,"items":[' + '{"title":"a","children":[' * count + ']}' * count + ']}'
        page = page_of(json, self.folder).read_text(encoding='utf-8')
        self.assertEqual(page.count('<li>'), count)
        self.assertEqual(page.count('</li>'), count)


@unittest.skipUnless(browser and browser.is_there(), 'skipped: chromium, chromedriver or selenium is missing')
class InBrowser(Pages):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.browser = browser.Browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.__exit__()
        super().tearDownClass()

    def open(self, json=None, *options, **look):
        self.page = page_of(json or self.sample, self.folder, *options)
        self.browser.requests(), self.browser.messages()
        self.browser.open(self.page, **look)

    def visible(self):
        """The titles that are on the screen."""
        return self.browser.run('''return [...document.querySelectorAll("main .title")]
            .filter((e) => e.checkVisibility()).map((e) => e.textContent)''')

    def type(self, text):
        box = self.browser.driver.find_element('id', 'filter')
        box.send_keys(text)
        self.browser.driver.execute_async_script(
            'requestAnimationFrame(() => requestAnimationFrame(arguments[0]))')

    def test_items_show_as_the_document_has_them_expanded(self):
        self.open()
        titles = self.visible()
        self.assertIn('Tomatoes', titles)
        self.assertNotIn('Compare prices', titles)
        self.assertNotIn('Sharpen tools', titles)

    def test_nothing_is_asked_for_and_nothing_complains(self):
        for json in (self.sample, HOSTILE):
            self.open(json)
            self.assertEqual(set(self.browser.requests()), {self.page.as_uri()})
            self.assertEqual(self.browser.messages(), [])

    def test_text_stays_text(self):
        self.open(HOSTILE)
        self.assertEqual(self.browser.run('return document.scripts.length'), 1)
        self.assertEqual(self.browser.run('return document.title'),
                         "</title><script>document.title='x'</script>")
        titles = self.visible()
        self.assertEqual(titles[0], '<img src=http://127.0.0.1:9/a onerror=alert(1)>')
        self.assertEqual(titles[2], 'a\ufffdb\ufffdc\ufffdd\ufffde\ufffdf\rg\x0ch & <i>')
        self.assertEqual(self.browser.run('return document.querySelector(".note").textContent'),
                         '</ul></details><script>alert(2)</script>')

    def test_links_lead_only_where_they_may(self):
        self.open(HOSTILE)
        self.assertEqual(self.browser.run('''return [...document.querySelectorAll("a")]
            .map((e) => e.getAttribute("href"))'''),
                         ['https://e.example/?a="><script>alert(4)</script>',
                          'HTTPS://E.example', 'file:///etc/hosts'])

    def test_filter(self):
        self.open()
        before = self.visible()
        self.type('SHARPEN')
        self.assertEqual(self.visible(), ['Winter', 'Sharpen tools'])
        self.assertEqual(self.browser.run('return document.querySelector("output").textContent'),
                         '1 of 27')
        self.type('\ue00c')  # Escape
        self.assertEqual(self.visible(), before)
        self.type('rain barrel')  # a note
        self.assertEqual(self.visible(), ['Summer – water and wait', 'Water in the evening'])
        self.type('zzz')
        self.assertEqual(self.visible(), [])

    def test_keyboard(self):
        self.open()
        keys = self.browser.driver.switch_to.active_element
        keys.send_keys('\ue004')  # Tab
        focused = 'return document.activeElement.localName + document.activeElement.textContent'
        self.assertEqual(self.browser.run(focused), 'input')
        self.browser.driver.switch_to.active_element.send_keys('\ue004')
        self.assertEqual(self.browser.run(focused), 'summarySpring – wake the beds')
        self.browser.driver.switch_to.active_element.send_keys('\ue007')  # Enter folds
        self.assertNotIn('Tomatoes', self.visible())
        self.browser.driver.switch_to.active_element.send_keys(' ')
        self.assertIn('Tomatoes', self.visible())

    def test_without_scripts(self):
        self.browser.command('Emulation.setScriptExecutionDisabled', value=True)
        try:
            self.open()
        finally:
            self.browser.command('Emulation.setScriptExecutionDisabled', value=False)
        self.assertIn('Tomatoes', self.visible())
        self.assertFalse(self.browser.run('return document.querySelector("form").checkVisibility()'))

    def test_dark_and_light_are_readable(self):
        for dark in (False, True):
            self.open(dark=dark)
            low = self.browser.run(CONTRAST)
            self.assertEqual(low, [], f'dark: {dark}')

    def test_narrow_pages_do_not_scroll_sideways(self):
        for width in (320, 390, 1100):
            self.open(None, 'numbers', width=width)
            self.assertLessEqual(
                self.browser.run('return document.documentElement.scrollWidth'), width)

    def test_paper(self):
        self.open()
        pdf = self.browser.pdf()
        self.assertTrue(pdf.startswith(b'%PDF'))
        self.browser.command('Emulation.setEmulatedMedia', media='print')
        self.assertFalse(self.browser.run('return document.querySelector("form").checkVisibility()'))
        self.assertEqual(
            self.browser.run('return getComputedStyle(document.documentElement).color'),
            'rgb(0, 0, 0)')
        self.browser.command('Emulation.setEmulatedMedia', media='')

    def test_screen_readers(self):
        self.open(None, 'numbers')
        nodes = [node for node in self.browser.accessibility_tree() if not node['ignored']]
        roles = [(node['role']['value'], node.get('name', {}).get('value', '')) for node in nodes]
        self.assertIn(('RootWebArea', 'Garden year'), roles)
        self.assertIn(('heading', 'Garden year'), roles)
        self.assertIn(('searchbox', 'Filter items'), roles)
        self.assertIn(('image', 'all children checked'), roles)
        self.assertEqual(sum(role == 'main' for role, _ in roles), 1)
        summaries = [node for node in nodes if node['role']['value'] == 'DisclosureTriangle']
        self.assertTrue(summaries)
        for node in summaries:
            self.assertTrue(node['name']['value'].strip())
            states = {each['name']: each['value'].get('value') for each in node['properties']}
            self.assertIn('expanded', states)
        for role, name in roles:
            if role in ('link', 'image', 'searchbox', 'heading'):
                self.assertTrue(name.strip(), role)
        # every item is an entry of a list in a list, however the style draws them
        self.assertEqual(self.browser.run('''return [...document.querySelectorAll("main li")]
            .filter((e) => e.parentElement.getAttribute("role") !== "list").length'''), 0)
        self.assertEqual(self.browser.run('''const ids = [...document.querySelectorAll("[id]")]
            .map((e) => e.id); return ids.length - new Set(ids).size'''), 0)
        self.assertEqual(self.browser.run('return document.documentElement.lang'), 'en')


# Texts on the screen whose contrast with what is behind them is below 4.5 to 1.
CONTRAST = '''
const parts = (color) => color.match(/[\\d.]+/g).map(Number);
const light = (color) => {
  const [r, g, b] = parts(color).slice(0, 3).map((v) => v / 255)
      .map((v) => v <= 0.04045 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4);
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const behind = (element) => {
  for (let at = element; at; at = at.parentElement) {
    const color = getComputedStyle(at).backgroundColor;
    if ((parts(color)[3] ?? 1) === 1) return color;
  }
  return "rgb(255, 255, 255)";
};
return [...document.querySelectorAll("h1,dt,dd,label,.title,.note,.number,.untitled,a,code")]
    .filter((e) => e.checkVisibility()).flatMap((e) => {
      const both = [light(getComputedStyle(e).color), light(behind(e))].sort();
      const ratio = (Math.max(...both) + 0.05) / (Math.min(...both) + 0.05);
      return ratio < 4.5 ? [e.className + e.textContent + " " + ratio] : [];
    });
'''

if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1])
