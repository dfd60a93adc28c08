"""Many documents at once: order, messages, faults, ends of processes."""
import os
import pty
import signal
import subprocess
import time

import driver
from driver import Item, run


class Jobs(driver.Case):
    def test_results_and_messages_come_in_order(self):
        names, wanted = [], ''
        for i in range(300):
            # large and small ones by turns, so that later files are done before earlier ones
            items = [Item('needle %d' % i)] + [Item('hay') for _ in range(2000 if i % 7 == 0 else 1)]
            names.append(self.save('%03d.tavlin' % i, items))
            wanted += '%s:1:needle %d\n' % (names[-1], i)
        gone = [names[i] + '.gone' for i in (50, 51, 200)]
        for jobs in ('1', '2', '7'):
            self.assertEqual(self.ok('find', '-j', jobs, 'needle', *names), wanted)
            mixed = names[:50] + gone[:2] + names[50:200] + gone[2:] + names[200:]
            result = run('find', '-j', jobs, 'needle', *mixed)
            self.assertEqual((result.status, result.out), (2, wanted))
            self.assertEqual(result.err, ''.join(
                'tavlin: %s: No such file or directory\n' % name for name in gone))

    def test_much_output_of_one_document(self):
        big = self.save('big.tavlin', [Item('needle ' + 'x' * 500) for _ in range(5000)])
        self.assertEqual(self.ok('find', '-j2', 'needle', big, big), 2 * self.ok('find', 'needle', big))

    def test_long_work_on_one_document_shows_itself_on_a_terminal_only(self):
        content = driver.content([Item('x')])
        for arguments, wanted in ((('export', '--to=text', '-o', self.folder / 'out', '-'), b''),
                                  (('show', '-'), b'x\n')):
            terminal, inside = pty.openpty()
            process = subprocess.Popen([driver.PROGRAM, *map(str, arguments)], env=driver.ENVIRONMENT,
                                       stdin=subprocess.PIPE, stdout=inside, stderr=inside)
            os.close(inside)
            time.sleep(1.6)  # the document comes late
            process.stdin.write(content)
            process.stdin.close()
            self.assertEqual(process.wait(10), 0)
            self.assertEqual(os.read(terminal, 1000).replace(b'\r\n', b'\n'),
                             b'\r\x1b[K-: 1 s\r\x1b[K' + wanted)
            os.close(terminal)
        late = '(sleep 1.6; cat "$1") | "$0" show -'
        done = subprocess.run(['sh', '-c', late, driver.PROGRAM, self.save('d.tavlin', [Item('x')])],
                              env=driver.ENVIRONMENT, capture_output=True)
        self.assertEqual((done.stdout, done.stderr), (b'x\n', b''))

    def test_an_interrupt_leaves_nothing_behind(self):
        source = self.folder / 'in.md'
        source.write_text('- item\n\n  note\n\n' * 60000)
        for after in (0.05, 0.2, 0.4, 0.6):
            process = subprocess.Popen([driver.PROGRAM, 'import', '-o', self.folder / 'out.tavlin', source],
                                       env=driver.ENVIRONMENT, stderr=subprocess.PIPE)
            time.sleep(after)
            process.send_signal(signal.SIGINT)
            status = process.wait(10)
            self.assertEqual(process.stderr.read(), b'')
            process.stderr.close()
            if status == 0:
                break
            self.assertEqual(status, -signal.SIGINT)
            self.assertEqual(os.listdir(self.folder), ['in.md'])

    def test_an_interrupt_ends_at_once(self):
        big = self.save('big.tavlin', [Item('%d' % i) for i in range(30000)])
        process = subprocess.Popen([driver.PROGRAM, 'find', '-j2', 'x', *[big] * 300],
                                   env=driver.ENVIRONMENT, stderr=subprocess.PIPE,
                                   start_new_session=True)
        time.sleep(0.5)
        began = time.monotonic()
        os.killpg(process.pid, signal.SIGINT)
        self.assertEqual(process.wait(10), -signal.SIGINT)
        self.assertLess(time.monotonic() - began, 5)
        self.assertEqual(process.stderr.read(), b'')
        process.stderr.close()


if __name__ == '__main__':
    driver.main()
