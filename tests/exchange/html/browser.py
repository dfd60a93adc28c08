"""Headless Chromium, driven over the DevTools protocol by chromedriver."""
import base64
import json
import pathlib
import shutil
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service


def is_there():
    return bool(shutil.which('chromium') and shutil.which('chromedriver'))


class Browser:
    """A browser for pages in files, which tells what a page asked for and complained about."""

    def __init__(self):
        self.profile = tempfile.TemporaryDirectory()
        options = webdriver.ChromeOptions()
        options.binary_location = shutil.which('chromium')
        for argument in ('--headless=new', '--no-sandbox', '--disable-gpu', '--hide-scrollbars',
                         '--disable-dev-shm-usage', '--disable-background-networking',
                         '--force-device-scale-factor=1', f'--user-data-dir={self.profile.name}'):
            options.add_argument(argument)
        options.set_capability('goog:loggingPrefs', {'browser': 'ALL', 'performance': 'ALL'})
        self.driver = webdriver.Chrome(service=Service(shutil.which('chromedriver')),
                                       options=options)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.driver.quit()
        self.profile.cleanup()

    def command(self, name, **parameters):
        return self.driver.execute_cdp_cmd(name, parameters)

    def open(self, path, width=1000, height=800, dark=False):
        self.command('Emulation.setDeviceMetricsOverride', width=width, height=height,
                     deviceScaleFactor=1, mobile=False)
        self.command('Emulation.setEmulatedMedia', features=[
            {'name': 'prefers-color-scheme', 'value': 'dark' if dark else 'light'}])
        self.driver.get(pathlib.Path(path).absolute().as_uri())

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def screenshot(self, path):
        """The whole page as a picture."""
        size = self.command('Page.getLayoutMetrics')['cssContentSize']
        picture = self.command('Page.captureScreenshot', format='png', captureBeyondViewport=True,
                               clip={'x': 0, 'y': 0, 'width': size['width'],
                                     'height': size['height'], 'scale': 1})
        pathlib.Path(path).write_bytes(base64.b64decode(picture['data']))

    def messages(self):
        """What was written to the console since the last call."""
        return [entry['message'] for entry in self.driver.get_log('browser')]

    def requests(self):
        """The addresses that were asked for since the last call."""
        events = [json.loads(entry['message'])['message']
                  for entry in self.driver.get_log('performance')]
        return [event['params']['request']['url'] for event in events
                if event['method'] == 'Network.requestWillBeSent']

    def pdf(self):
        return base64.b64decode(self.command('Page.printToPDF')['data'])

    def accessibility_tree(self):
        return self.command('Accessibility.getFullAXTree')['nodes']
