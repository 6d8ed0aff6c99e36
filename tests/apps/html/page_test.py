#!/usr/bin/env python3
"""The HTML pages, opened in a browser and used as their readers use them.

    page_test.py PROGRAM PROJECT_FOLDER [unittest's words]

A machine where the browser does not start fails the test: nothing here is skipped.
"""

import json
import sys
import tempfile
import time
import unittest
from pathlib import Path

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

from browser import Proxy, open_page, print_pdf, render, start_browser

PROGRAM, PROJECT = sys.argv[1], Path(sys.argv[2])

# Three leaves are found by "ro"; labels that would end a script, open a tag, or run from right to left.
GEARBOX = {
    "label": "Gearbox",
    "children": [
        {"label": "Housing", "value": 5000},
        {
            "label": "Shaft group",
            "children": [
                {"label": "Rotor", "value": 980},
                {"label": "Key", "value": 20},
                {"label": "</script><b>Bolt & 'nut'</b>", "value": 1000},
            ],
        },
        {"label": "\u05d2\u05dc\u05d2\u05dc", "value": 1000},
        {"label": "Front cover", "children": [{"label": "Cr\u00e8me ring", "value": 1500}, {"label": "Rod", "value": 500}]},
    ],
}


def big_tree():
    """10,101 nodes, all of them drawn when there is room."""
    groups = [{"label": f"Assembly {i}", "children": [{"label": f"Part {i}-{j}, 12 x 40", "value": j + 1} for j in range(100)]} for i in range(100)]
    return {"label": "Plant", "children": groups}


class Session:
    """One browser for all tests, and the pages."""

    proxy = None
    browser = None
    folder = None
    pages = {}


def setUpModule():
    Session.folder = tempfile.TemporaryDirectory()
    Session.proxy = Proxy()
    Session.browser = start_browser(Session.proxy)


def tearDownModule():
    if Session.browser:
        Session.browser.quit()
    if Session.proxy:
        Session.proxy.close()
    Session.folder.cleanup()


def page(name, words, tree=None):
    """The path of a page, written once."""
    path = Path(Session.folder.name) / f"{name}.html"
    if name not in Session.pages:
        text = json.dumps(tree) if tree is not None else ""
        Session.pages[name] = render(PROGRAM, words, text)
        path.write_text(Session.pages[name], encoding="utf-8")
    return path


class PageTest(unittest.TestCase):
    name, words, tree = "gearbox", ("-", "--size", "800x500"), GEARBOX

    def setUp(self):
        self.browser = Session.browser
        self.path = page(self.name, self.words, self.tree)
        open_page(self.browser, self.path)

    def tearDown(self):
        self.assertEqual(self.complaints(), [], "the browser complains")

    def complaints(self):
        """What the browser has complained about since this was asked last."""
        return [entry["message"] for entry in self.browser.get_log("browser") if entry["level"] in ("SEVERE", "WARNING")]

    # What a test reads and does.

    def run_script(self, text, *arguments):
        return self.browser.execute_script(text, *arguments)

    def item(self, start):
        """The tree item whose name starts so."""
        found = self.browser.find_elements(By.CSS_SELECTOR, f'[role="treeitem"][aria-label^="{start},"]')
        self.assertEqual(len(found), 1, start)
        return found[0]

    def text(self, name):
        return self.run_script("return document.getElementById(arguments[0]).textContent", name)

    def shown(self):
        """The names, without value and share, of all nodes in the picture."""
        return self.run_script(
            "return [...document.querySelectorAll('[role=treeitem]')].filter(item => getComputedStyle(item).visibility !== 'hidden')"
            ".map(item => item.getAttribute('aria-label').split(', value')[0].split(/, [0-9,]+ triangle/)[0])"
        )

    def focused(self):
        name = self.run_script("return document.activeElement.getAttribute('aria-label') || document.activeElement.id")
        return name.split(", value")[0]

    def focus(self, start):
        self.run_script("arguments[0].focus()", self.item(start))

    def press(self, *keys):
        self.browser.switch_to.active_element.send_keys(*keys)

    def box(self, start):
        """The node's rectangle in the picture's pixels."""
        return self.run_script(
            "const svg = document.querySelector('#picture svg'); const outer = svg.getBoundingClientRect();"
            "const scale = Number(svg.getAttribute('viewBox').split(' ')[2]) / outer.width;"
            "const box = arguments[0].querySelector('rect, image, use').getBoundingClientRect();"
            "return [box.x - outer.x, box.y - outer.y, box.width, box.height].map(side => side * scale)",
            self.item(start),
        )

    def labels(self, start):
        return self.run_script("return [...arguments[0].querySelectorAll('text')].map(text => text.textContent)", self.item(start))

    def crumbs(self):
        return [part.text for part in self.browser.find_elements(By.CSS_SELECTOR, "#crumbs li")]

    def search(self, text):
        query = self.browser.find_element(By.ID, "query")
        query.send_keys(Keys.CONTROL, "a")
        query.send_keys(text if text else Keys.BACKSPACE)

    def assert_box(self, start, expected, message=None):
        for side, wanted in zip(self.box(start), expected):
            self.assertAlmostEqual(side, wanted, delta=0.6, msg=message or start)


class Names(PageTest):
    def test_every_drawn_node_is_an_item_of_one_tree(self):
        trees = self.browser.find_elements(By.CSS_SELECTOR, '[role="tree"]')
        self.assertEqual([tree.tag_name for tree in trees], ["svg"])
        self.assertEqual(trees[0].accessible_name, "Parts of Gearbox")
        self.assertEqual(len(trees[0].find_elements(By.CSS_SELECTOR, '[role="treeitem"]')), 10)

    def test_an_item_is_named_by_label_value_and_share_of_total(self):
        item = self.item("Rotor")
        self.assertEqual(item.accessible_name, "Rotor, value 980, 9.80 % of total")
        self.assertEqual(item.aria_role, "treeitem")
        self.assertEqual(self.item("Key").accessible_name, "Key, value 20, 0.20 % of total")

    def test_an_item_tells_level_place_and_whether_it_is_open(self):
        def attributes(start):
            names = ("aria-level", "aria-posinset", "aria-setsize", "aria-expanded")
            return [self.item(start).get_attribute(name) for name in names]

        self.assertEqual(attributes("Gearbox"), ["1", "1", "1", "true"])
        self.assertEqual(attributes("Shaft group")[0], "2")
        self.assertEqual(attributes("Shaft group")[2:], ["4", "true"])
        self.assertEqual(attributes("Rotor")[0], "3")
        self.assertEqual(attributes("Rotor")[2:], ["3", None], "a leaf is neither open nor closed")
        places = {attributes(name)[1] for name in ("Rotor", "Key", "</script><b>Bolt & 'nut'</b>")}
        self.assertEqual(places, {"1", "2", "3"})

    def test_one_item_alone_is_reached_with_the_tab_key(self):
        items = self.browser.find_elements(By.CSS_SELECTOR, '[role="treeitem"][tabindex="0"]')
        self.assertEqual(len(items), 1)
        self.focus("Rotor")
        items = self.browser.find_elements(By.CSS_SELECTOR, '[role="treeitem"][tabindex="0"]')
        self.assertEqual([item.get_attribute("aria-selected") for item in items], ["true"])
        self.assertEqual(items[0].accessible_name, "Rotor, value 980, 9.80 % of total")

    def test_controls_and_landmarks_have_names(self):
        for element in self.browser.find_elements(By.CSS_SELECTOR, "button, input, nav, aside"):
            self.assertNotEqual(element.accessible_name if element.is_displayed() else "hidden", "", element.get_attribute("outerHTML"))

    def test_labels_arrive_as_they_are(self):
        self.assertEqual(self.browser.find_elements(By.CSS_SELECTOR, "b"), [], "no label became an element")
        self.assertEqual(self.labels("</script><b>Bolt & 'nut'</b>"), ["</script><b>Bolt & 'nut'</b>"])
        self.item("\u05d2\u05dc\u05d2\u05dc")
        self.assertEqual(self.browser.title, "Gearbox")


class Tooltip(PageTest):
    def lines(self):
        return [line.text for line in self.browser.find_elements(By.CSS_SELECTOR, "#tooltip p")]

    def hover(self, start):
        ActionChains(self.browser, duration=0).move_to_element(self.item(start).find_element(By.CSS_SELECTOR, "text")).perform()

    def test_the_pointer_shows_label_path_value_and_shares(self):
        self.hover("Rotor")
        self.assertEqual(self.lines(), ["Rotor", "Gearbox \u203a Shaft group", "value 980", "9.80 % of total \u00b7 49.0 % of Shaft group"])

    def test_the_root_has_neither_path_nor_parent(self):
        self.hover("Gearbox")
        self.assertEqual(self.lines(), ["Gearbox", "value 10,000", "100.0 % of total"])

    def test_a_label_is_shown_as_it_is_written(self):
        self.hover("</script><b>Bolt & 'nut'</b>")
        self.assertEqual(self.lines()[0], "</script><b>Bolt & 'nut'</b>")

    def test_the_keyboard_shows_it_as_well(self):
        self.focus("Key")
        self.assertEqual(self.lines()[0], "Key")
        self.press(Keys.ESCAPE)
        self.assertFalse(self.browser.find_element(By.ID, "tooltip").is_displayed(), "Escape takes it away")

    def test_it_stays_in_the_window_and_goes_with_the_pointer(self):
        for name in ("Gearbox", "Housing", "Rod"):
            self.hover(name)
            inside = self.run_script(
                "const box = document.getElementById('tooltip').getBoundingClientRect();"
                "return box.left >= 0 && box.top >= 0 && box.right <= innerWidth && box.bottom <= innerHeight"
            )
            self.assertTrue(inside, name)
        ActionChains(self.browser, duration=0).move_to_element(self.browser.find_element(By.TAG_NAME, "h1")).perform()
        self.assertFalse(self.browser.find_element(By.ID, "tooltip").is_displayed())


class Search(PageTest):
    def test_hits_are_counted_without_regard_to_case_and_accents(self):
        self.search("RO")
        self.assertEqual(self.text("hits"), "4 hits", "Rotor, Shaft group, Front cover and Rod")
        self.search("creme")
        self.assertEqual(self.text("hits"), "1 hit")
        self.search("</b>")
        self.assertEqual(self.text("hits"), "1 hit", "searched as written")
        self.search("gasket")
        self.assertEqual(self.text("hits"), "no hits")
        self.search("")
        self.assertEqual(self.text("hits"), "")

    def test_hits_stand_out_and_the_rest_is_veiled(self):
        self.search("rod")
        x, y, width, height = self.box("Rod")
        self.assertEqual(self.run_script("return document.querySelector('.hits').getBBox().width"), width)
        veil = self.run_script("return document.querySelector('.veil').getAttribute('d')")
        self.assertEqual(veil.count("M"), 2, "the picture and a hole in it")
        self.search("")
        self.assertEqual(self.run_script("return document.querySelector('.veil').getAttribute('d')"), "")

    def test_enter_goes_from_hit_to_hit_and_round(self):
        self.search("ro")
        seen = []
        for i in range(4):
            self.press(Keys.ENTER)
            self.assertEqual(self.text("hits"), f"hit {i + 1} of 4")
            seen.append(self.run_script("return document.querySelector('[aria-selected=true]').getAttribute('aria-label')"))
        self.assertEqual(len(set(seen)), 4)
        self.press(Keys.ENTER)
        self.assertEqual(self.text("hits"), "hit 1 of 4")
        self.press(Keys.SHIFT, Keys.ENTER)
        self.assertEqual(self.text("hits"), "hit 4 of 4")
        self.browser.find_element(By.ID, "later").click()
        self.assertEqual(self.text("hits"), "hit 1 of 4")
        self.browser.find_element(By.ID, "earlier").click()
        self.assertEqual(self.text("hits"), "hit 4 of 4")

    def test_a_hit_outside_the_zoom_is_counted_and_shown_when_it_is_its_turn(self):
        self.focus("Front cover")
        self.press(Keys.ENTER)
        self.search("ro")
        self.assertEqual(self.text("hits"), "4 hits, 2 in view")
        names = set()
        for _ in range(4):
            self.press(Keys.ENTER)
            names.add(self.run_script("return document.querySelector('[aria-selected=true]').getAttribute('aria-label')").split(",")[0])
        self.assertEqual(names, {"Rotor", "Shaft group", "Front cover", "Rod"})
        self.assertEqual(self.crumbs(), ["Gearbox"])

    def test_escape_empties_the_field_and_then_leaves_it(self):
        self.search("rotor")
        self.press(Keys.ENTER)
        self.press(Keys.ESCAPE)
        self.assertEqual(self.browser.find_element(By.ID, "query").get_attribute("value"), "")
        self.press(Keys.ESCAPE)
        self.assertEqual(self.focused(), "Rotor")


class Zoom(PageTest):
    def double_click(self, start):
        text = self.item(start).find_element(By.CSS_SELECTOR, "text")
        ActionChains(self.browser, duration=0).double_click(text).perform()

    def test_a_node_takes_the_whole_picture(self):
        self.double_click("Shaft group")
        self.assert_box("Shaft group", [0, 0, 800, 500])
        self.assertEqual(set(self.shown()), {"Shaft group", "Rotor", "Key", "</script><b>Bolt & 'nut'</b>"})
        self.assertEqual(self.crumbs(), ["Gearbox", "Shaft group"])
        self.assertEqual(self.text("news"), "Zoomed to Shaft group, 4 nodes")

    def test_frame_and_label_band_keep_their_size_and_children_share_the_rest(self):
        self.double_click("Shaft group")
        boxes = [self.box(name) for name in ("Rotor", "Key", "</script><b>Bolt & 'nut'</b>")]
        self.assertAlmostEqual(min(box[0] for box in boxes), 1, delta=0.6)
        self.assertAlmostEqual(min(box[1] for box in boxes), 14, delta=0.6)
        self.assertAlmostEqual(max(box[0] + box[2] for box in boxes), 799, delta=1.1)
        self.assertAlmostEqual(max(box[1] + box[3] for box in boxes), 499, delta=1.1)
        for i, one in enumerate(boxes):
            for other in boxes[:i]:
                apart = one[0] + one[2] <= other[0] + 0.1 or other[0] + other[2] <= one[0] + 0.1
                apart = apart or one[1] + one[3] <= other[1] + 0.1 or other[1] + other[3] <= one[1] + 0.1
                self.assertTrue(apart, "siblings do not overlap")

    def test_labels_keep_their_font_and_stay_in_their_boxes(self):
        before = self.run_script("return document.querySelector('#picture text').getAttribute('font-size')")
        self.double_click("Shaft group")
        faults = self.run_script(
            "return [...document.querySelectorAll('[role=treeitem]')].filter(item => getComputedStyle(item).visibility !== 'hidden' && item.querySelector('text'))"
            ".filter(item => {const text = item.querySelector('text'); const box = item.querySelector('rect').getBBox(); const ink = text.getBBox();"
            "return text.getAttribute('font-size') !== arguments[0] || ink.x < box.x - 0.5 || ink.x + ink.width > box.x + box.width + 0.5})"
            ".map(item => item.outerHTML)",
            before,
        )
        self.assertEqual(faults, [])
        self.assertEqual(self.labels("Rotor"), ["Rotor"])

    def test_back_and_reset_show_the_picture_as_it_was_drawn(self):
        self.double_click("Shaft group")
        self.assertEqual(len(self.shown()), 4)
        self.browser.find_element(By.ID, "back").click()
        self.assertEqual(len(self.shown()), 10)
        self.assertFalse(self.browser.find_element(By.ID, "back").is_enabled())
        self.double_click("Front cover")
        self.assertTrue(self.browser.find_element(By.ID, "back").is_enabled())
        self.browser.find_element(By.ID, "reset").click()
        self.assertEqual(self.crumbs(), ["Gearbox"])
        self.assertFalse(self.browser.find_element(By.ID, "reset").is_enabled())
        states = "tabindex|aria-selected|class"
        plain = "return document.querySelector('#n0').parentNode.innerHTML.replace(/ (%s)=\"[^\"]*\"/g, '')" % states
        after = self.run_script(plain)
        open_page(self.browser, self.path)
        self.assertEqual(after, self.run_script(plain))

    def test_a_leaf_shows_what_it_is_in(self):
        self.double_click("Rotor")
        self.assertEqual(self.crumbs(), ["Gearbox", "Shaft group"])
        self.double_click("Rotor")
        self.assertEqual(self.crumbs(), ["Gearbox", "Shaft group"])
        self.assertEqual(self.text("news"), "Rotor cannot be enlarged further")

    def test_the_picture_moves_unless_the_reader_wants_no_motion(self):
        self.addCleanup(self.browser.execute_cdp_cmd, "Emulation.setEmulatedMedia", {"media": "", "features": []})
        for motion, movements in (("reduce", 0), ("no-preference", 1)):
            features = [{"name": "prefers-reduced-motion", "value": motion}]
            self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "", "features": features})
            count = self.run_script(
                "arguments[0].focus(); arguments[0].dispatchEvent(new KeyboardEvent('keydown', {key: 'Enter', bubbles: true}));"
                "const count = document.querySelector('#picture svg').getAnimations().length; document.getElementById('reset').click(); return count",
                self.item("Shaft group"),
            )
            self.assertEqual(count, movements, motion)

    def test_what_is_outside_is_not_found_by_the_pointer(self):
        self.double_click("Shaft group")
        found = self.run_script(
            "const outer = document.querySelector('#picture svg').getBoundingClientRect(); const found = new Set();"
            "for (let x = 3; x < outer.width; x += 7) for (let y = 3; y < outer.height; y += 7) {"
            "  const item = document.elementFromPoint(outer.x + x, outer.y + y).closest('[role=treeitem]'); if (item) found.add(item.getAttribute('aria-label').split(', value')[0]); }"
            "return [...found]"
        )
        self.assertEqual(set(found), {"Shaft group", "Rotor", "Key", "</script><b>Bolt & 'nut'</b>"})

    def test_the_path_leads_back_up(self):
        self.double_click("Shaft group")
        self.browser.find_element(By.CSS_SELECTOR, "#crumbs button").click()
        self.assertEqual(self.crumbs(), ["Gearbox"])
        self.assertEqual(len(self.shown()), 10)


class Keyboard(PageTest):
    def test_right_and_left_go_into_a_node_and_out_again(self):
        self.focus("Gearbox")
        self.press(Keys.ARROW_RIGHT)
        first = self.focused()
        self.assertEqual(self.item(first).get_attribute("aria-posinset"), "1")
        self.assertEqual(self.item(first).get_attribute("aria-level"), "2")
        self.press(Keys.ARROW_LEFT)
        self.assertEqual(self.focused(), "Gearbox")
        self.press(Keys.ARROW_LEFT)
        self.assertEqual(self.focused(), "Gearbox", "nothing is outside")

    def test_down_and_up_go_through_the_neighbours(self):
        self.focus("Gearbox")
        self.press(Keys.ARROW_RIGHT)
        names = [self.focused()]
        for _ in range(3):
            self.press(Keys.ARROW_DOWN)
            names.append(self.focused())
        self.assertEqual(set(names), {"Housing", "Shaft group", "\u05d2\u05dc\u05d2\u05dc", "Front cover"})
        self.press(Keys.ARROW_DOWN)
        self.assertEqual(self.focused(), names[3], "the last one")
        self.press(Keys.ARROW_UP)
        self.assertEqual(self.focused(), names[2])

    def test_down_from_the_last_child_goes_on_behind_its_parent(self):
        self.focus("Gearbox")
        self.press(Keys.ARROW_RIGHT)
        order = [self.focused()]
        for _ in range(3):
            self.press(Keys.ARROW_DOWN)
            order.append(self.focused())
        group = next(name for name in order[:-1] if name in ("Shaft group", "Front cover"))
        self.focus(group)
        self.press(Keys.ARROW_RIGHT)
        for _ in range(int(self.browser.switch_to.active_element.get_attribute("aria-setsize"))):
            self.press(Keys.ARROW_DOWN)
        self.assertEqual(self.focused(), order[order.index(group) + 1])

    def test_home_and_end_go_to_the_first_and_the_last_node(self):
        self.focus("Key")
        self.press(Keys.HOME)
        self.assertEqual(self.focused(), "Gearbox")
        self.press(Keys.END)
        last = self.focused()
        self.press(Keys.ARROW_DOWN)
        self.assertEqual(self.focused(), last)

    def test_enter_zooms_and_backspace_and_escape_go_back(self):
        for key in (Keys.BACKSPACE, Keys.ESCAPE):
            self.focus("Shaft group")
            self.press(Keys.ENTER)
            self.assertEqual(self.crumbs(), ["Gearbox", "Shaft group"])
            self.assertEqual(self.focused(), "Shaft group", "the focus stays")
            self.press(key)
            self.assertEqual(self.crumbs(), ["Gearbox"])
            self.assertEqual(self.focused(), "Shaft group")

    def test_the_keys_stay_within_the_zoom(self):
        self.focus("Shaft group")
        self.press(Keys.ENTER)
        self.press(Keys.ARROW_LEFT)
        self.press(Keys.ARROW_DOWN)
        self.assertEqual(self.focused(), "Shaft group")
        self.press(Keys.END)
        self.assertIn(self.focused(), ("Rotor", "Key", "</script><b>Bolt & 'nut'</b>"))
        self.press(Keys.HOME)
        self.assertEqual(self.focused(), "Shaft group")

    def test_a_slash_goes_to_the_search(self):
        self.focus("Key")
        self.press("/")
        self.assertEqual(self.focused(), "Search labels")
        self.press("r/o")
        self.assertEqual(self.browser.find_element(By.ID, "query").get_attribute("value"), "r/o", "typed as it is in the field")

    def test_the_focus_can_be_seen(self):
        self.focus("Key")
        mark = self.run_script("const box = document.querySelector('#marks .selected').getBBox(); return [box.x, box.y, box.width, box.height]")
        x, y, width, height = self.box("Key")
        for side, wanted in zip(mark, (x + 1, y + 1, width - 2, height - 2)):
            self.assertAlmostEqual(side, wanted, delta=0.6)
        self.assertEqual(self.run_script("return getComputedStyle(document.querySelector('#marks .under')).strokeWidth"), "4px")


class Network(PageTest):
    def test_the_page_asks_for_nothing(self):
        self.focus("Shaft group")
        self.press(Keys.ENTER)
        self.search("ro")
        self.press(Keys.ENTER)
        self.assertEqual(self.run_script("return performance.getEntriesByType('resource').map(entry => entry.name)"), [])
        asked = []
        for entry in self.browser.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                asked.append(message["params"]["request"]["url"])
        self.assertEqual([url for url in asked if not url.startswith("data:")], [self.path.resolve().as_uri()], "the page itself")
        self.assertEqual(Session.proxy.requests, [])

    def test_nothing_that_gets_into_the_page_could_ask_for_anything(self):
        image = '<img src="http://example.invalid/x.png"><link rel="stylesheet" href="http://example.invalid/x.css"></body>'
        intruded = Session.pages["gearbox"].replace("</body>", image + "<script>document.title = 'ran'</script>")
        guarded = Path(Session.folder.name) / "guarded.html"
        guarded.write_text(intruded, encoding="utf-8")
        open_page(self.browser, guarded)
        time.sleep(0.3)
        self.assertEqual(Session.proxy.requests, [])
        self.assertEqual(self.browser.title, "Gearbox", "a script that is not the page's own does not run")
        refused = self.complaints()
        self.assertEqual(len(refused), 3, refused)
        self.assertEqual([text for text in refused if "Content Security Policy" not in text], [])
        # The same without the policy arrives: the proxy would have heard of it.
        start, end = intruded.index('<meta http-equiv="Content-Security-Policy"'), intruded.index('<meta name="viewport"')
        bare = Path(Session.folder.name) / "bare.html"
        bare.write_text(intruded[:start] + intruded[end:], encoding="utf-8")
        open_page(self.browser, bare)
        deadline = time.monotonic() + 5
        while len(Session.proxy.requests) < 2 and time.monotonic() < deadline:
            time.sleep(0.05)
        self.assertIn("GET http://example.invalid/x.png HTTP/1.1", Session.proxy.requests)
        self.complaints()
        Session.proxy.requests.clear()


class Appearance(PageTest):
    def emulate(self, **values):
        features = [{"name": name.replace("_", "-"), "value": value} for name, value in values.items() if name != "media"]
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": values.get("media", ""), "features": features})
        self.addCleanup(self.browser.execute_cdp_cmd, "Emulation.setEmulatedMedia", {"media": "", "features": []})

    def contrasts(self):
        """The contrast of every text of the page outside the picture with what it stands on."""
        return self.run_script(
            """
            const light = ([r, g, b]) => [r, g, b].map(part => part / 255).map(part => part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4)
              .reduce((sum, part, i) => sum + part * [0.2126, 0.7152, 0.0722][i], 0);
            const numbers = color => color.match(/[0-9.]+/g).map(Number);
            const ground = element => { for (; element; element = element.parentElement) {
              const color = numbers(getComputedStyle(element).backgroundColor); if (color.length === 3 || color[3] === 1) return color; } return [255, 255, 255]; };
            const found = [];
            for (const element of document.querySelectorAll('body *')) {
              if (element.closest('svg') || element.disabled || !element.checkVisibility() || ![...element.childNodes].some(node => node.nodeType === 3 && node.data.trim())) continue;
              const [a, b] = [light(numbers(getComputedStyle(element).color)), light(ground(element))];
              found.push([element.textContent.trim().slice(0, 30), (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05)]);
            }
            return found;
            """
        )

    def test_texts_have_contrast_in_light_and_dark(self):
        grounds = []
        for scheme in ("light", "dark"):
            self.emulate(prefers_color_scheme=scheme)
            self.focus("Key")
            found = self.contrasts()
            self.assertGreater(len(found), 20)
            self.assertEqual([entry for entry in found if entry[1] < 4.5], [], scheme)
            grounds.append(self.run_script("return getComputedStyle(document.body).backgroundColor"))
        self.assertNotEqual(grounds[0], grounds[1])

    def test_the_picture_keeps_its_colours_in_the_dark(self):
        colors = "return [...document.querySelectorAll('#picture rect')].map(rect => getComputedStyle(rect).fill)"
        self.emulate(prefers_color_scheme="light")
        light = self.run_script(colors)
        self.emulate(prefers_color_scheme="dark")
        self.assertEqual(self.run_script(colors), light)

    def test_paper_shows_picture_and_legend_without_the_controls(self):
        self.focus("Key")
        self.emulate(media="print")
        for hidden in ("#search", "nav", "#help", "#tooltip", "#marks"):
            self.assertFalse(self.browser.find_element(By.CSS_SELECTOR, hidden).is_displayed(), hidden)
        for shown in ("h1", ".facts", "#picture svg", "aside"):
            self.assertTrue(self.browser.find_element(By.CSS_SELECTOR, shown).is_displayed(), shown)
        document = print_pdf(self.browser)
        self.assertEqual(document.count(b"/Type /Page\n"), 1, "one sheet")

    def test_the_legend_says_that_areas_are_no_measure(self):
        legend = self.browser.find_element(By.CSS_SELECTOR, "aside").text
        self.assertIn("areas are no measure of the value", legend)
        self.assertIn("The level below the root", legend)

    def test_a_picture_that_is_larger_than_the_window_can_be_seen_in_full_size(self):
        self.assertFalse(self.browser.find_element(By.ID, "full").is_displayed())
        self.browser.set_window_size(700, 900)
        self.addCleanup(self.browser.set_window_size, 1400, 1200)
        full = self.browser.find_element(By.ID, "full")
        self.assertTrue(full.is_displayed())
        full.click()
        self.assertEqual(self.run_script("return document.querySelector('#picture svg').getBoundingClientRect().width"), 800)
        self.assertEqual(full.get_attribute("aria-pressed"), "true")

    def test_the_page_fits_a_narrow_window(self):
        self.browser.set_window_size(500, 900)
        self.addCleanup(self.browser.set_window_size, 1400, 1200)
        self.assertLessEqual(self.run_script("return document.documentElement.scrollWidth - innerWidth"), 0)


class WithoutScript(PageTest):
    def setUp(self):
        super().setUp()
        self.browser.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": True})
        self.addCleanup(self.browser.execute_cdp_cmd, "Emulation.setScriptExecutionDisabled", {"value": False})
        open_page(self.browser, self.path)

    def test_the_picture_is_there_and_the_controls_are_not(self):
        self.assertEqual(len(self.browser.find_elements(By.CSS_SELECTOR, "#picture text")), 10)
        self.assertEqual(self.browser.find_elements(By.CSS_SELECTOR, "[role=treeitem]"), [])
        self.assertFalse(self.browser.find_element(By.ID, "query").is_displayed())
        self.assertTrue(self.browser.find_element(By.ID, "noscript").is_displayed())


class Cushion(PageTest):
    name, words = "cushion", ("-", "--layout", "cushion", "--resize-by-value", "--size", "800x500")

    def backdrop(self):
        return self.run_script(
            "const image = document.querySelectorAll('#picture image'); return [image.length, ...['x', 'y', 'width', 'height'].map(name => Number(image[0].getAttribute(name)))]"
        )

    def test_one_image_lies_under_the_rectangles_of_all_nodes(self):
        self.assertEqual(len(self.shown()), 10)
        self.assertEqual(self.backdrop(), [1, 0, 0, 800, 500])
        self.assert_box("Gearbox", [0, 0, 800, 500])
        _, _, width, height = self.box("Housing")
        self.assertAlmostEqual(width * height, 800 * 500 / 2, delta=800, msg="half of the value")

    def test_the_pointer_finds_the_leaf(self):
        for name in ("Rotor", "Rod", "Housing"):
            ActionChains(self.browser, duration=0).move_to_element(self.item(name).find_element(By.CSS_SELECTOR, "rect")).perform()
            self.assertEqual(self.browser.find_element(By.CSS_SELECTOR, "#tooltip .label").text, name)

    def test_zooming_scales_the_image_with_the_rectangles(self):
        x, y, width, height = self.box("Shaft group")
        rotor = self.box("Rotor")
        self.focus("Shaft group")
        self.press(Keys.ENTER)
        self.assert_box("Shaft group", [0, 0, 800, 500])
        factors = [800 / width, 500 / height]
        for side, wanted in zip(self.backdrop()[1:], (-x * factors[0], -y * factors[1], 800 * factors[0], 500 * factors[1])):
            self.assertAlmostEqual(side, wanted, delta=0.1)
        self.assert_box("Rotor", [(rotor[0] - x) * factors[0], (rotor[1] - y) * factors[1], rotor[2] * factors[0], rotor[3] * factors[1]])
        self.press(Keys.BACKSPACE)
        self.assertEqual(self.backdrop(), [1, 0, 0, 800, 500])

    def test_the_legend_says_what_areas_are(self):
        self.assertIn("Areas are in proportion to the value", self.browser.find_element(By.CSS_SELECTOR, "aside").text)


    def test_what_is_outside_the_zoom_is_not_found_by_the_pointer(self):
        self.focus("Shaft group")
        self.press(Keys.ENTER)
        for name in ("Rotor", "</script><b>Bolt & 'nut'</b>"):
            ActionChains(self.browser, duration=0).move_to_element(self.item(name).find_element(By.CSS_SELECTOR, "rect")).perform()
            self.assertEqual(self.browser.find_element(By.CSS_SELECTOR, "#tooltip .label").text, name)


class Icicle(PageTest):
    name, words = "icicle", ("-", "--layout", "icicle", "--size", "fit")

    def size(self):
        return self.run_script("return document.querySelector('#picture svg').getAttribute('viewBox').split(' ').slice(2).map(Number)")

    def test_a_node_and_what_is_in_it_fill_the_picture(self):
        width, height = self.size()
        self.focus("Shaft group")
        self.press(Keys.ENTER)
        names = ("Rotor", "Key", "</script><b>Bolt & 'nut'</b>")
        self.assertEqual(set(self.shown()), {"Shaft group", *names})
        group = self.box("Shaft group")
        self.assert_box("Shaft group", [0, 0, group[2], height])
        boxes = sorted((self.box(name) for name in names), key=lambda box: box[1])
        for box in boxes:
            self.assertAlmostEqual(box[0] - group[2], 2, delta=0.6, msg="the gap between columns stays")
            self.assertAlmostEqual(box[0] + box[2], width, delta=0.6)
        for above, below in zip(boxes, boxes[1:]):
            self.assertAlmostEqual(below[1] - above[1] - above[3], 2, delta=0.6, msg="the gap between rows stays")
        self.assertAlmostEqual(boxes[0][1], 0, delta=0.6)
        self.assertAlmostEqual(boxes[-1][1] + boxes[-1][3], height, delta=0.6)

    def test_labels_stay_in_the_middle_of_their_nodes(self):
        def off_middle(name):
            return self.run_script(
                "const [text, box] = ['text', 'rect'].map(name => arguments[0].querySelector(name).getBBox());"
                "return text.y + text.height / 2 - box.y - box.height / 2",
                self.item(name),
            )

        before = {name: off_middle(name) for name in ("Rod", "Front cover")}
        self.focus("Front cover")
        self.press(Keys.ENTER)
        for name, offset in before.items():
            self.assertAlmostEqual(off_middle(name), offset, delta=1, msg=name)

    def test_the_plate_of_the_picture_s_selection_gives_way(self):
        pieces = self.run_script("return [...document.querySelector('[aria-selected=true]').children].map(piece => piece.tagName)")
        self.assertEqual(pieces, ["rect", "text"])


class LastColumn(PageTest):
    name, words = "last", ("-", "--layout", "icicle", "--size", "fit", "--last-columns", "1")

    def test_what_is_not_drawn_is_still_in_the_path(self):
        self.assertEqual(set(self.shown()), {"Housing", "\u05d2\u05dc\u05d2\u05dc", "Rotor", "Key", "</script><b>Bolt & 'nut'</b>", "Cr\u00e8me ring", "Rod"})
        self.focus("Rotor")
        self.assertEqual(self.browser.find_element(By.CSS_SELECTOR, "#tooltip .path").text, "Gearbox \u203a Shaft group")
        item = self.item("Rotor")
        self.assertEqual([item.get_attribute(name) for name in ("aria-level", "aria-setsize")], ["1", "7"])
        self.press(Keys.ENTER)
        self.assertEqual(self.crumbs(), ["Gearbox"], "there is nothing to zoom to")


class TallPicture(PageTest):
    name, words = "tall", ("-", "--layout", "icicle", "--size", "fit")
    tree = {"label": "Rack", "children": [{"label": f"Shelf {i}", "children": [{"label": f"Box {i}-{j}"} for j in range(10)]} for i in range(10)]}

    def test_the_zoomed_picture_is_no_higher_than_it_needs(self):
        height = "return document.querySelector('#picture svg').getBoundingClientRect().height"
        before = self.run_script(height)
        self.assertGreater(before, 2500)
        self.focus("Shelf 3")
        self.press(Keys.ENTER)
        self.assertLess(self.run_script(height), 1200, "about the height of the window")
        self.assert_box("Shelf 3", [0, 0, self.box("Shelf 3")[2], self.run_script("return Number(document.querySelector('#picture svg').getAttribute('height'))")])
        self.press(Keys.BACKSPACE)
        self.assertEqual(self.run_script(height), before)

    def test_it_goes_over_several_sheets_of_paper(self):
        self.assertGreater(print_pdf(self.browser).count(b"/Type /Page\n"), 1)


class ModelIcicle(PageTest):
    name, words, tree = "model_icicle", (str(PROJECT / "examples/example.step"), "--layout", "icicle", "--size", "fit"), None

    def icons(self):
        """How many icons show, and how many there are."""
        return self.run_script(
            "const icons = [...document.querySelectorAll('[role=treeitem] use, [role=treeitem] image')]"
            ".filter(icon => getComputedStyle(icon).visibility !== 'hidden');"
            "return [icons.filter(icon => icon.getBoundingClientRect().width > 0).length, icons.length]"
        )

    def test_icons_show_in_the_zoom_and_after_it(self):
        before = self.icons()
        self.assertGreater(before[0], 150)
        self.assertEqual(before[0], before[1])
        for name in ("Frame", "Pump", "Gears"):
            self.focus(name)
            self.press(Keys.ENTER)
            self.assertEqual(self.crumbs()[-1], name)
            shown, some = self.icons()
            self.assertEqual((shown, some), (len(self.shown()),) * 2, "an icon each")
            self.run_script("document.getElementById('reset').click()")
            self.assertEqual(self.icons(), before)


class Model(PageTest):
    name, words, tree = "model", (str(PROJECT / "examples/example.step"),), None

    def test_values_are_triangles(self):
        item = self.item("Gears")
        self.assertRegex(item.accessible_name, r"^Gears, [0-9,]+ triangles, [0-9.]+ % of total$")

    def test_a_closed_node_tells_how_much_is_hidden_in_it(self):
        closed = self.browser.find_elements(By.CSS_SELECTOR, '[role="treeitem"][aria-expanded="false"]')
        self.assertGreater(len(closed), 0)
        self.run_script("arguments[0].focus()", closed[0])
        self.assertRegex(self.text("tooltip"), r"[0-9]+ nodes? below not in this picture")
        self.press(Keys.ENTER)
        self.assertTrue(self.run_script("return arguments[0].querySelectorAll('rect').length === 2", closed[0]), "colour and grid")

    def test_a_shortened_label_shows_more_of_itself_where_there_is_room(self):
        self.focus("Gears")
        cut = self.labels("Shaft seal 14\u00d728\u00d77")[0]
        self.assertTrue(cut.endswith("..."), cut)
        self.press(Keys.ENTER)
        self.assertEqual(self.labels("Shaft seal 14\u00d728\u00d77"), ["Shaft seal 14\u00d728\u00d77"])


class TenThousandNodes(PageTest):
    name, words, tree = "big", ("-", "--size", "16000x9000"), big_tree()

    def timed(self, script, *arguments):
        """Milliseconds, with the layout that the script makes necessary."""
        return self.run_script(
            f"const begin = performance.now(); {script}; document.body.getBoundingClientRect(); return performance.now() - begin", *arguments
        )

    def test_the_file_stays_below_three_megabytes(self):
        self.assertEqual(len(self.browser.find_elements(By.CSS_SELECTOR, "[role=treeitem]")), 10101)
        size = self.path.stat().st_size
        print(f"count: 10,101 drawn nodes in a page of {size:,} bytes")
        self.assertLess(size, 3_000_000)

    def test_acts_stay_quick(self):
        search = self.timed("const query = document.getElementById('query'); query.value = 'part'; query.dispatchEvent(new Event('input'))")
        self.assertEqual(self.text("hits"), "10,000 hits")
        enter = "arguments[0].focus(); arguments[0].dispatchEvent(new KeyboardEvent('keydown', {key: 'Enter', bubbles: true}))"
        zoom = self.timed(enter, self.item("Assembly 7"))
        self.assertEqual(self.crumbs(), ["Plant", "Assembly 7"])
        self.assertEqual(len(self.shown()), 101)
        back = self.timed("document.getElementById('back').click()")
        self.assertEqual(self.crumbs(), ["Plant"])
        move = self.timed("document.activeElement.dispatchEvent(new KeyboardEvent('keydown', {key: 'ArrowDown', bubbles: true}))")
        print(f"milliseconds with 10,101 nodes: search {search:.0f}, zoom {zoom:.0f}, back {back:.0f}, move {move:.0f}")
        for milliseconds in (search, zoom, back, move):
            self.assertLess(milliseconds, 10000, "even on a machine that is busy with other work")

    def test_no_node_has_listeners_of_its_own(self):
        item = self.browser.execute_cdp_cmd("Runtime.evaluate", {"expression": "document.querySelector('#n5')"})["result"]["objectId"]
        found = self.browser.execute_cdp_cmd("DOMDebugger.getEventListeners", {"objectId": item, "depth": -1})
        self.assertEqual(found["listeners"], [])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=1)
