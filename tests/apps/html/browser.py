"""A headless browser, the pages that it opens, and a proxy that hears whatever it asks the network for."""

import base64
import re
import socket
import subprocess
import threading
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service

BROWSER = "/usr/bin/chromium"
DRIVER = "/usr/bin/chromedriver"

# No window, no sandbox (a build machine runs the tests as root), no network for the browser's own purposes, and the
# pictures' movements off, so that a test sees the end of each at once.
ARGUMENTS = (
    "--headless=new",
    "--no-sandbox",
    "--disable-dev-shm-usage",
    "--disable-gpu",
    "--window-size=1400,1200",
    "--hide-scrollbars",
    "--force-prefers-reduced-motion",
    "--no-first-run",
    "--disable-background-networking",
    "--disable-component-update",
    "--disable-sync",
    "--disable-features=NetworkTimeServiceQuerying",
)

# What the browser asks for on its own account when it starts, whatever page it shows. It gets no answer either.
BROWSERS_OWN = re.compile(r"\S+ (http://)?[\w.-]+\.(google\.com|googleapis\.com|gvt1\.com|gstatic\.com)[:/]")


class Proxy:
    """Takes every connection, answers none, and remembers the first line of each request of a page."""

    def __init__(self):
        self.requests = []
        self._server = socket.create_server(("127.0.0.1", 0))
        self.port = self._server.getsockname()[1]
        threading.Thread(target=self._serve, daemon=True).start()

    def _serve(self):
        while True:
            try:
                connection, _ = self._server.accept()
            except OSError:
                return
            with connection:
                connection.settimeout(2)
                try:
                    line = connection.recv(4096).split(b"\r\n")[0].decode("latin-1")
                except OSError:
                    line = ""
                if not BROWSERS_OWN.match(line):
                    self.requests.append(line or "a connection without a request")

    def close(self):
        self._server.close()


def start_browser(proxy):
    options = Options()
    options.binary_location = BROWSER
    for argument in (*ARGUMENTS, f"--proxy-server=http://127.0.0.1:{proxy.port}", "--proxy-bypass-list=<-loopback>"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    browser = webdriver.Chrome(service=Service(DRIVER), options=options)
    browser.set_page_load_timeout(60)
    browser.set_script_timeout(60)
    return browser


def render(program, words, text="", output="-"):
    """The page that `dataviz` writes, or what it says when it fails."""
    command = [program, "render", *words, "-o", output, "--format", "html"]
    result = subprocess.run(command, input=text.encode(), capture_output=True, check=False)
    if result.returncode != 0:
        raise RuntimeError(f"{command}: {result.stderr.decode()}")
    return result.stdout.decode()


def open_page(browser, path):
    """Opens a file and forgets what the browser had to say before."""
    browser.get_log("browser")
    browser.get_log("performance")
    browser.get(Path(path).resolve().as_uri())


def print_pdf(browser):
    answer = browser.execute_cdp_cmd("Page.printToPDF", {"preferCSSPageSize": True, "printBackground": True})
    return base64.b64decode(answer["data"])
