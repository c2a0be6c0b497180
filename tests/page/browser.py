"""Debian's chromium, driven by WebDriver, and a panel with its page. Whoever starts one ends it: both
are context managers."""
import base64
import contextlib
import glob
import json
import os
import re
import signal
import subprocess
import threading
import time
import urllib.error
import urllib.request

ELEMENT = 'element-6066-11e4-a52e-4f735466cecf'
KEYS = {'Tab': '\ue004', 'Enter': '\ue007', 'Escape': '\ue00c', 'ArrowDown': '\ue015', 'ArrowUp': '\ue013',
        'ArrowLeft': '\ue012'}
ARGUMENTS = ['--headless=new', '--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage', '--no-first-run',
             '--hide-scrollbars', '--window-size=1280,900']


class Unmet(AssertionError):
    """Something did not come in time; tells what was there instead."""


def wait_for(what, look, is_met, seconds=15):
    """look() again and again until is_met(what it gives); returns that."""
    end = time.monotonic() + seconds
    while True:
        seen = look()
        if is_met(seen):
            return seen
        if time.monotonic() > end:
            raise Unmet(f'waited {seconds} s for {what}; there was {seen!r}')
        time.sleep(0.1)


class Lines:
    """What a process prints, collected while it runs."""

    def __init__(self, pipe):
        self.text = ''
        self._thread = threading.Thread(target=self._read, args=(pipe,), daemon=True)
        self._thread.start()

    def _read(self, pipe):
        with pipe:
            for line in pipe:
                self.text += line

    def wait(self, pattern, seconds=30):
        return wait_for(pattern, lambda: self.text, lambda text: re.search(pattern, text), seconds) and \
            re.search(pattern, self.text)


@contextlib.contextmanager
def process(command, **options):
    """In a group of its own, of which nothing is left behind."""
    made = subprocess.Popen(command, start_new_session=True, text=True, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, **options)
    try:
        yield made
    finally:
        with contextlib.suppress(subprocess.TimeoutExpired):
            if made.stdin:
                made.stdin.close()
            made.terminate()
            made.wait(10)
        with contextlib.suppress(ProcessLookupError):
            os.killpg(made.pid, signal.SIGKILL)
        made.wait(10)


class Panel:
    """hxdpanel with its page; type() is its console."""

    def __init__(self, made):
        self._made = made
        self._lines = Lines(made.stdout)
        self.address = self._lines.wait(r'http://[0-9.]+:\d+/\S*').group()
        self.port = int(re.search(r':(\d+)/', self.address).group(1))

    def type(self, line):
        self._made.stdin.write(line + '\n')
        self._made.stdin.flush()

    def wait_for_text(self, pattern):
        return self._lines.wait(pattern)

    def cpu_seconds(self):
        """Of all its processes since they were started."""
        status = {}
        for path in glob.glob('/proc/[0-9]*/stat'):
            with contextlib.suppress(FileNotFoundError, ProcessLookupError), open(path) as file:
                fields = file.read().rpartition(')')[2].split()
                status[int(path.split('/')[2])] = (int(fields[1]), int(fields[11]) + int(fields[12]))
        family = {self._made.pid}
        while more := {pid for pid, (parent, _) in status.items() if parent in family} - family:
            family |= more
        return sum(status[pid][1] for pid in family if pid in status) / os.sysconf('SC_CLK_TCK')

    def end(self):
        self.type('quit')
        self._made.wait(15)


@contextlib.contextmanager
def panel(program, *options, port=0):
    command = [program, '--fresh', *options, '--page', str(port)]
    with process(command, stdin=subprocess.PIPE) as made:
        yield Panel(made)


class Browser:
    def __init__(self, driver):
        self._driver = driver
        options = {'args': ARGUMENTS}
        answer = self._ask('POST', '/session', {'capabilities': {'alwaysMatch': {
            'browserName': 'chrome', 'goog:chromeOptions': options, 'goog:loggingPrefs': {'browser': 'ALL'}}}})
        self._session = f'/session/{answer["sessionId"]}'

    def _ask(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self._driver + path, data, {'Content-Type': 'application/json'}, method=method)
        try:
            with urllib.request.urlopen(request, timeout=60) as response:
                return json.load(response)['value']
        except urllib.error.HTTPError as error:
            raise Unmet(f'{method} {path} {body}: {error.read().decode()[:600]}') from error

    def quit(self):
        self._ask('DELETE', self._session)

    def open(self, address):
        self._ask('POST', self._session + '/url', {'url': address})

    def script(self, text, *arguments):
        return self._ask('POST', self._session + '/execute/sync', {'script': text, 'args': list(arguments)})

    def devtools(self, command, **parameters):
        return self._ask('POST', self._session + '/goog/cdp/execute', {'cmd': command, 'params': parameters})

    def find(self, selector):
        found = self._ask('POST', self._session + '/element', {'using': 'css selector', 'value': selector})
        return f'{self._session}/element/{found[ELEMENT]}'

    def click(self, selector):
        """As a person would: the place is brought to the middle, and a page that moved meanwhile is tried again."""
        def attempt():
            self.script('document.querySelector(arguments[0])?.scrollIntoView({block: "center"})', selector)
            try:
                self._ask('POST', self.find(selector) + '/click', {})
            except Unmet as unmet:
                if not re.search('click intercepted|stale element|no such element', str(unmet)):
                    raise
                return unmet
            return None
        wait_for(f'{selector} to be clicked', attempt, lambda unmet: unmet is None)

    def fill(self, selector, text):
        self.script('const field = document.querySelector(arguments[0]); field.focus(); field.select()', selector)
        self.press(text)

    def press(self, *keys):
        """To whatever has the focus: names of KEYS, else texts to type."""
        typed = [character for key in keys for character in ([KEYS[key]] if key in KEYS else key)]
        actions = [{'type': kind, 'value': character} for character in typed for kind in ('keyDown', 'keyUp')]
        self._ask('POST', self._session + '/actions', {'actions': [{'type': 'key', 'id': 'keys', 'actions': actions}]})

    def text(self, selector):
        return self.script('return document.querySelector(arguments[0])?.textContent ?? null', selector)

    def wait_for_text(self, selector, pattern, seconds=15):
        return wait_for(f'{pattern!r} in {selector}', lambda: self.text(selector),
                        lambda text: text is not None and re.search(pattern, text), seconds)

    def complaints(self):
        """What went wrong in the page: exceptions, what its security policy stopped, files that are missing."""
        log = self._ask('POST', self._session + '/se/log', {'type': 'browser'})
        return [entry['message'] for entry in log if entry['level'] == 'SEVERE']

    def picture(self):
        return base64.b64decode(self._ask('GET', self._session + '/screenshot'))


@contextlib.contextmanager
def browser():
    with process(['chromedriver', '--port=0']) as driver:
        port = Lines(driver.stdout).wait(r'successfully on port (\d+)').group(1)
        made = Browser(f'http://127.0.0.1:{port}')
        try:
            yield made
        finally:
            made.quit()
