"""The program from outside: what it prints and answers, and that its documents are archives that
another reader of the format understands.  Needs nothing but Python.

    program_test.py TAVLIN-KEYWORDS OUTLINE-MAKE GARDEN
"""
import os
import plistlib
import resource
import shutil
import subprocess
import sys
import tempfile
import unittest

TOOL, MAKE, GARDEN = sys.argv[1:4]

USAGE = (b'\n\n tavlin-keywords - Command line utility to read and write keywords field in '
         b'properties of Tavlin documents.\n\n'
         b' tavlin-keywords -r fullpath\n'
         b'    It reads keywords from file where fullpath and lists keywords.\n\n'
         b' tavlin-keywords -w fullpath [keyword1 keyword2 ...]\n'
         b'    It writes keywords into file where fullpath.\n\n'
         b'\n')


def keywords_of(path):
    """The keywords that a document holds, by walking the archive from its root."""
    with open(path, 'rb') as stream:
        archive = plistlib.load(stream)
    assert archive['$archiver'] == 'NSKeyedArchiver' and archive['$version'] == 100000
    objects = archive['$objects']

    def dictionary(uid):
        record = objects[uid]
        return {objects[k]: v for k, v in zip(record['NS.keys'], record['NS.objects'])}

    controller = objects[archive['$top']['root']]
    root = objects[objects[controller['tree']]['root']]
    properties = dictionary(dictionary(root['data'])['documentProperties'])
    return [objects[uid] for uid in objects[properties['keywords']]['NS.objects']]


class Program(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.document = os.path.join(self.folder, 'garden.tavlin')
        subprocess.run([GARDEN, self.document], check=True)

    def tearDown(self):
        shutil.rmtree(self.folder)

    def run_tool(self, *arguments, status=0, **options):
        done = subprocess.run([TOOL, *arguments], capture_output=True, timeout=120, **options)
        self.assertEqual(done.returncode, status, done)
        return done

    def test_usage(self):
        for arguments in ((), ('-r',), ('-w',), ('-x',), ('document',)):
            self.assertEqual(self.run_tool(*arguments).stdout, USAGE)

    def test_unknown_mode_says_nothing(self):
        for mode in ('-x', '-R', '--read', ''):
            done = self.run_tool(mode, self.document, 'x')
            self.assertEqual((done.stdout, done.stderr), (b'\n', b''))

    def test_read_and_write(self):
        self.assertEqual(self.run_tool('-r', self.document, 'ignored').stdout,
                         b'garden,beds\\, borders\n')
        self.assertEqual(self.run_tool('-w', self.document, 'a,b', 'x\ty', '日本').stdout, b'\n')
        self.assertEqual(keywords_of(self.document), ['a,b', 'x y', '日本'])
        self.assertEqual(self.run_tool('-r', self.document).stdout, 'a\\,b,x y,日本\n'.encode())
        self.run_tool('-w', self.document)
        self.assertEqual(keywords_of(self.document), [])

    def test_a_second_write_gives_the_same_bytes(self):
        self.run_tool('-w', self.document, 'one', 'two')
        with open(self.document, 'rb') as stream:
            once = stream.read()
        self.run_tool('-w', self.document, 'one', 'two')
        with open(self.document, 'rb') as stream:
            self.assertEqual(stream.read(), once)

    def test_keyword_that_is_no_utf8(self):
        with open(self.document, 'rb') as stream:
            before = stream.read()
        done = self.run_tool('-w', self.document, 'good', b'\xff', status=255)
        self.assertEqual(done.stdout, b'\n')
        self.assertIn(b'argument 4 is no UTF-8 text', done.stderr)
        with open(self.document, 'rb') as stream:
            self.assertEqual(stream.read(), before)

    def test_path_that_is_no_utf8(self):
        odd = os.fsencode(self.folder) + b'/\xff.tavlin'
        os.rename(self.document, odd)
        self.assertEqual(self.run_tool('-r', odd).stdout, b'garden,beds\\, borders\n')
        self.run_tool('-w', odd, 'x')
        self.assertEqual(self.run_tool('-r', odd).stdout, b'x\n')

    def test_tilde(self):
        environment = dict(os.environ, HOME=self.folder)
        self.assertEqual(self.run_tool('-r', '~/garden.tavlin', env=environment).stdout,
                         b'garden,beds\\, borders\n')

    def test_messages(self):
        missing = self.run_tool('-r', os.path.join(self.folder, 'missing'), status=255)
        self.assertEqual(missing.stdout, b'\n')
        last = missing.stderr.splitlines()[-1]
        self.assertRegex(last, rb'^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \S+\[\d+\] '
                               rb'fail: open document$')

    def test_every_truncation_is_refused(self):
        with open(self.document, 'rb') as stream:
            content = stream.read()
        for length in range(0, len(content), 37):
            with open(self.document, 'wb') as stream:
                stream.write(content[:length])
            done = self.run_tool('-w', self.document, 'x', status=255)
            self.assertEqual(done.stdout, b'\n')
            self.assertTrue(done.stderr.endswith(b'fail: open document\n'), done.stderr)

    def run_with_output(self, output, *arguments):
        """The status and the messages when standard output is a descriptor, or closed (None)."""
        done = subprocess.run([TOOL, *arguments], stdout=output, stderr=subprocess.PIPE, timeout=120,
                              preexec_fn=(lambda: os.close(1)) if output is None else None)
        return done.returncode, done.stderr

    def closed_pipe(self):
        read_end, write_end = os.pipe()
        os.close(read_end)
        self.addCleanup(os.close, write_end)
        return write_end

    def test_messages_name_the_file(self):
        contents = {'empty': b'', 'short': b'bplist00', 'xml': b'<?xml version="1.0"?><plist',
                    'list': plistlib.dumps([1], fmt=plistlib.FMT_BINARY)}
        for name, content in contents.items():
            path = os.path.join(self.folder, name)
            with open(path, 'wb') as stream:
                stream.write(content)
            for mode in ('-r', '-w'):
                with self.subTest(name=name, mode=mode):
                    messages = self.run_tool(mode, path, status=255).stderr.splitlines()
                    self.assertIn(b'] ' + os.fsencode(path) + b': ', b'\n'.join(messages))
                    self.assertTrue(messages[-1].endswith(b'] fail: open document'), messages)

    def test_what_was_written_stays_written_when_nobody_reads_the_newline(self):
        for number, output in enumerate((None, self.closed_pipe())):
            self.assertEqual(self.run_with_output(output, '-w', self.document, str(number)),
                             (0, b''))
            self.assertEqual(keywords_of(self.document), [str(number)])

    def test_a_limit_on_file_sizes_does_not_end_it_by_a_signal(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (0, 0))
        with tempfile.TemporaryFile() as output:
            done = subprocess.run([TOOL, '-r', self.document], stdout=output,
                                  stderr=subprocess.PIPE, preexec_fn=limit, timeout=120)
        self.assertEqual(done.returncode, 255)
        self.assertIn(b'the keywords cannot be printed: File too large', done.stderr)

    def test_keywords_that_nobody_gets_are_a_failure(self):
        without = os.path.join(self.folder, 'without.tavlin')
        shutil.copy(self.document, without)
        self.run_tool('-w', without)
        with open('/dev/full', 'wb') as full:
            for path in (self.document, without):
                for output, reason in ((None, b'Bad file descriptor'),
                                       (self.closed_pipe(), b'Broken pipe'),
                                       (full, b'No space left on device')):
                    status, messages = self.run_with_output(output, '-r', path)
                    self.assertEqual(status, 255)
                    self.assertTrue(messages.endswith(
                        b'] the keywords cannot be printed: ' + reason + b'\n'), messages)
                    self.assertEqual(messages.count(b'\n'), 1)

    def test_reads_what_can_be_read_once(self):
        with open(self.document, 'rb') as stream:
            content = stream.read()
        for path in ('/dev/stdin', '/dev/fd/0', '/proc/self/fd/0'):
            self.assertEqual(self.run_tool('-r', path, input=content).stdout,
                             b'garden,beds\\, borders\n')
        with open(self.document, 'rb') as stream:
            self.assertEqual(self.run_tool('-r', '/dev/stdin', stdin=stream).stdout,
                             b'garden,beds\\, borders\n')
        substituted = subprocess.run(
            ['bash', '-c', '"$0" -r <(sleep 1.2; cat "$1")', TOOL, self.document],
            capture_output=True, timeout=120)
        self.assertEqual((substituted.returncode, substituted.stdout, substituted.stderr),
                         (0, b'garden,beds\\, borders\n', b''))
        self.assertIn(b'Document contains no data',
                      self.run_tool('-r', '/dev/stdin', input=b'', status=255).stderr)

    def test_waits_for_nobody_for_long(self):
        fifo = os.path.join(self.folder, 'fifo')
        os.mkfifo(fifo)
        self.assertIn(b'Document contains no data', self.run_tool('-r', fifo, status=255).stderr)
        for device in ('/dev/zero', '/dev/null', '/dev/full'):
            self.run_tool('-r', device, status=255)

    def test_nothing_is_left_behind(self):
        self.run_tool('-w', self.document, 'x')
        self.assertEqual(os.listdir(self.folder), ['garden.tavlin'])

    def test_large_documents_in_every_shape(self):
        path = os.path.join(self.folder, 'large.tavlin')
        for shape in ('flat', 'deep', 'mixed'):
            subprocess.run([MAKE, path, '5000', shape], check=True)
            self.assertEqual(self.run_tool('-r', path).stdout, b'a\\,b,c\n')
            before = os.path.getsize(path)
            self.run_tool('-w', path, 'x')
            self.assertEqual(keywords_of(path), ['x'])
            self.assertLess(abs(os.path.getsize(path) - before), before // 50)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1])
