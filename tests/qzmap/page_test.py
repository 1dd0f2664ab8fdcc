"""The page of qzmap html in a browser: what lights up, what keys do, and what a large page holds."""

import os
import pathlib
import socket
import subprocess
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.wait import WebDriverWait

# Selenium calls the driver at localhost, a name that a bare system without /etc/hosts does not know.
# For the same reason the driver talks to the browser through a pipe.
find_addresses = socket.getaddrinfo
socket.getaddrinfo = lambda host, *rest, **options: find_addresses(
    "127.0.0.1" if host == "localhost" else host, *rest, **options)

SECONDS = 60  # for what takes an instant on a machine that has nothing else to do

LIBRARY = """\
@def helper(name, n) =
{
    int name() {
        return n;
    }
}
"""

TEXT = """\
@import "lib.qz"
helper(one, 1)
struct s {
    helper(two, 2)
};
int three = @(1 + 2);
"""


def start_browser():
    options = webdriver.ChromeOptions()
    for argument in ["--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu",
                     "--window-size=1200,700", "--remote-debugging-pipe"]:
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))


def make_page(folder, files):
    """Writes the files into the folder, expands a.cpp.qz and makes the page of its map."""
    for name, content in files.items():
        (folder / name).write_bytes(content)
    run = dict(cwd=folder, check=True)
    subprocess.run([os.environ["QZEXPAND"], "--map", "a.map", "-o", "a.cpp", "a.cpp.qz"], **run)
    subprocess.run([os.environ["QZMAP"], "html", "a.map", "-o", "page.html"], **run)
    return (folder / "page.html").as_uri()


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = start_browser()
        cls.addClassCleanup(cls.browser.quit)

    def open(self, files):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.show(make_page(pathlib.Path(folder.name), files))

    def show(self, page):
        self.browser.get(page)
        self.wait(lambda: self.script("return document.documentElement.dataset.ready") == "yes")

    def tearDown(self):
        # Mistakes of the script, and whatever the page would have loaded, are noted here.
        self.assertEqual(self.browser.get_log("browser"), [])

    # ---- looking at the page

    def script(self, text, *arguments):
        return self.browser.execute_script(text, *arguments)

    def wait(self, condition):
        return WebDriverWait(self.browser, SECONDS, poll_frequency=0.05).until(lambda _: condition())

    def expect(self, wanted, look):
        """Waits until looking at the page gives what is wanted."""
        seen = None

        def is_there():
            nonlocal seen
            seen = look()
            return seen == wanted

        try:
            self.wait(is_there)
        except Exception:
            self.assertEqual(seen, wanted)

    def texts(self, selector):
        """The texts of the elements, with the ends of lines as they are in the file."""
        return self.script(
            "return Array.from(document.querySelectorAll(arguments[0]), e => "
            "e.textContent + (e.querySelector('.end') ? '\\n' : ''))", selector)

    def stretch(self, pane, text, index=0):
        """The element of a stretch that starts with a text."""
        found = [e for e in self.browser.find_elements(By.CSS_SELECTOR, f"#{pane} .s")
                 if e.get_attribute("textContent").startswith(text)]
        return found[index]

    def pane(self, name):
        return self.browser.find_element(By.ID, name)

    def text_of(self, name):
        return self.script("return document.getElementById(arguments[0]).textContent", name)

    def lit(self, pane):
        return self.texts(f"#{pane} .lit")

    def focused(self):
        return self.script("return document.activeElement.id")

    def tab(self):
        return self.texts("#tabs [aria-selected='true']")

    def is_in_view(self, selector):
        return self.script("""
            const e = document.querySelector(arguments[0]);
            if (!e)
                return false;
            const box = e.getBoundingClientRect();
            const view = e.closest('.scroller').getBoundingClientRect();
            return box.top >= view.top && box.bottom <= view.bottom && box.left >= view.left &&
                   box.left < view.right;""", selector)


class Small(Page):
    def setUp(self):
        self.open({"a.cpp.qz": TEXT.encode(), "lib.qz": LIBRARY.encode()})

    def test_shows_the_output_and_the_first_source(self):
        self.assertEqual("".join(self.texts("#output .s")),
                         "\nint one() {\n    return 1;\n}\nstruct s {\n    int two() {\n"
                         "        return 2;\n    }\n};\nint three = 3;\n")
        self.assertEqual("".join(self.texts("#source [data-offset]")), TEXT)
        self.assertEqual(self.tab(), ["a.cpp.qz"])
        self.assertEqual(self.texts("#tabs [role=tab]"), ["a.cpp.qz", "lib.qz"])
        self.assertEqual(self.texts("#output .calculated"), ["3"])
        self.assertEqual(self.texts("#source .calculated"), ["@"])
        self.assertEqual(self.texts("#output .indentation"), ["    ", "    "])

    def test_a_click_on_the_output_lights_the_source_and_shows_it(self):
        self.stretch("output", "    return ", 1).click()
        self.assertEqual(self.tab(), ["lib.qz"])
        self.assertEqual(self.lit("source"), ["    return "])
        self.assertEqual(self.lit("output"), ["    return "])
        self.assertEqual(self.text_of("status"), "a.cpp:7:5: copied from lib.qz:4:5")

    def test_a_click_on_a_source_lights_every_place_in_the_output(self):
        self.browser.find_element(By.ID, "tab-1").click()
        self.stretch("source", "    return ").click()
        self.assertEqual(self.lit("output"), ["    return ", "    return "])
        self.assertEqual(self.text_of("status"), "lib.qz:4:5: in 2 places of the output")
        self.assertEqual(self.text_of("place"), "place 1 of 2")
        self.stretch("source", "    return ").click()
        self.assertEqual(self.text_of("place"), "place 2 of 2")
        self.assertEqual(self.text_of("status"), "a.cpp:7:5: copied from lib.qz:4:5")
        self.browser.find_element(By.ID, "next").click()
        self.assertEqual(self.text_of("place"), "place 1 of 2")

    def test_pointing_lights_without_moving_anything(self):
        ActionChains(self.browser).move_to_element(self.stretch("output", "    return ")).perform()
        self.expect(["    return "], lambda: self.texts("#output .hover"))
        self.assertEqual(self.tab(), ["a.cpp.qz"])
        self.assertEqual(self.lit("output"), [])
        ActionChains(self.browser).move_to_element(self.stretch("output", "3")).perform()
        self.expect(["@"], lambda: self.texts("#source .hover"))
        self.assertIn("calculated from `@`, a.cpp.qz:6:13", self.text_of("status"))
        ActionChains(self.browser).move_to_element(self.pane("needle")).perform()
        self.expect([], lambda: self.texts(".hover"))

    def test_indentation_has_no_counterpart(self):
        self.browser.find_element(By.CSS_SELECTOR, "#output .indentation").click()
        self.assertEqual(self.lit("source"), [])
        self.assertEqual(self.text_of("status"), "a.cpp:7:1: indentation")

    def test_what_is_not_in_the_output_is_shown_as_such(self):
        self.browser.find_element(By.ID, "tab-1").click()
        unused = "".join(self.texts("#source .unused"))
        self.assertIn("@def helper(name, n) =", unused)
        self.assertNotIn("return", unused)
        self.browser.find_element(By.CSS_SELECTOR, "#source .unused").click()
        self.assertEqual(self.text_of("status"), "lib.qz:1:1: not in the output")

    # ---- keys

    def test_arrows_go_from_stretch_to_stretch(self):
        self.pane("output").send_keys(Keys.ARROW_RIGHT)
        first = self.lit("output")
        self.assertEqual(first, ["int "])
        self.pane("output").send_keys(Keys.ARROW_RIGHT)
        self.assertEqual(self.lit("output"), ["one"])
        self.pane("output").send_keys(Keys.ARROW_LEFT)
        self.assertEqual(self.lit("output"), first)
        self.pane("output").send_keys(Keys.ARROW_DOWN * 8)
        self.assertEqual(self.text_of("status"), "a.cpp:10:1: copied from a.cpp.qz:6:1")
        self.pane("output").send_keys(Keys.END, Keys.ARROW_LEFT)
        self.assertEqual(self.lit("output"), ["3"])
        self.pane("output").send_keys(Keys.HOME)
        self.assertEqual(self.text_of("status"), "a.cpp:1:1: copied from a.cpp.qz:1:17")

    def test_keys_work_from_the_start_and_behind_a_search(self):
        ActionChains(self.browser).send_keys(Keys.ARROW_RIGHT).perform()
        self.assertEqual(self.lit("output"), ["int "])
        ActionChains(self.browser).send_keys("/").send_keys("return").perform()
        self.assertEqual(self.focused(), "needle")
        ActionChains(self.browser).send_keys(Keys.ENTER, Keys.ESCAPE, Keys.ARROW_RIGHT).perform()
        self.assertEqual(self.focused(), "output")
        self.assertEqual(len(self.lit("output")), 1)

    def test_arrows_go_over_the_source(self):
        self.pane("source").send_keys(Keys.END, Keys.ARROW_LEFT)
        seen = []
        for _ in range(4):
            self.pane("source").send_keys(Keys.ARROW_LEFT)
            seen.append(self.script("return sourcePane.cursor"))
        self.assertEqual(seen, sorted(seen, reverse=True))
        self.assertEqual(len(set(seen)), 4)
        self.pane("source").send_keys(Keys.ARROW_RIGHT)
        self.assertEqual(self.script("return sourcePane.cursor"), seen[2])

    def test_enter_jumps_to_the_counterpart_and_back(self):
        self.pane("output").send_keys(Keys.ARROW_DOWN * 6, Keys.ARROW_RIGHT)
        self.assertEqual(self.text_of("status"), "a.cpp:7:5: copied from lib.qz:4:5")
        self.pane("output").send_keys(Keys.ENTER)
        self.assertEqual(self.focused(), "source")
        self.assertEqual(self.tab(), ["lib.qz"])
        self.assertEqual(self.texts("#source .cursor"), ["    return "])
        self.pane("source").send_keys(Keys.ENTER)
        self.assertEqual(self.focused(), "output")
        self.assertEqual(self.text_of("place"), "place 2 of 2")
        self.pane("output").send_keys("p")
        self.assertEqual(self.text_of("place"), "place 1 of 2")
        self.assertEqual(self.text_of("status"), "a.cpp:3:1: copied from lib.qz:4:5")
        self.pane("output").send_keys("n")
        self.assertEqual(self.text_of("place"), "place 2 of 2")

    def test_tab_goes_from_pane_to_pane_and_escape_puts_out_the_lights(self):
        self.pane("output").send_keys(Keys.ARROW_RIGHT)
        self.assertNotEqual(self.lit("output"), [])
        ActionChains(self.browser).send_keys(Keys.TAB).perform()
        self.assertEqual(self.focused(), "tab-0")
        ActionChains(self.browser).send_keys(Keys.TAB).perform()
        self.assertEqual(self.focused(), "source")
        ActionChains(self.browser).key_down(Keys.SHIFT).send_keys(Keys.TAB * 2).perform()
        self.assertEqual(self.focused(), "output")
        ActionChains(self.browser).key_up(Keys.SHIFT).send_keys(Keys.ESCAPE).perform()
        self.assertEqual(self.lit("output") + self.lit("source"), [])

    def test_arrows_switch_the_tabs_of_the_sources(self):
        first = self.browser.find_element(By.ID, "tab-0")
        first.send_keys(Keys.ARROW_RIGHT)
        self.assertEqual(self.tab(), ["lib.qz"])
        self.assertEqual(self.focused(), "tab-1")
        self.assertEqual("".join(self.texts("#source [data-offset]")), LIBRARY)
        self.browser.find_element(By.ID, "tab-1").send_keys(Keys.ARROW_RIGHT)
        self.assertEqual(self.tab(), ["a.cpp.qz"])

    def test_the_search_finds_from_match_to_match(self):
        self.pane("output").send_keys("/")
        self.assertEqual(self.focused(), "needle")
        needle = self.pane("needle")
        needle.send_keys("return", Keys.ENTER)
        self.assertEqual(self.texts("#output .found"), ["return"])
        self.assertEqual(self.text_of("status"), "a.cpp:3:5: copied from lib.qz:4:9")
        needle.send_keys(Keys.ENTER)
        self.assertEqual(self.text_of("status"), "a.cpp:7:9: copied from lib.qz:4:9")
        needle.send_keys(Keys.ENTER)
        self.assertEqual(self.text_of("status"), "a.cpp:3:5: copied from lib.qz:4:9")
        self.browser.find_element(By.ID, "find-previous").click()
        self.assertEqual(self.text_of("status"), "a.cpp:7:9: copied from lib.qz:4:9")
        needle.clear()
        needle.send_keys("nowhere", Keys.ENTER)
        self.assertEqual(self.text_of("status"), "a.cpp: nothing found")

    # ---- for those who do not see it

    def test_roles_and_names_tell_what_is_what(self):
        names = self.script("""
            return ['output', 'source', 'tabs', 'panel', 'status', 'find'].map(id => {
                const e = document.getElementById(id);
                return [id, e.getAttribute('role'), e.getAttribute('aria-label')];
            });""")
        self.assertEqual(names, [["output", "listbox", "Output a.cpp"],
                                 ["source", "listbox", "Source a.cpp.qz"],
                                 ["tabs", "tablist", "Source files"], ["panel", "tabpanel", None],
                                 ["status", "status", None], ["find", "search", None]])
        self.pane("output").send_keys(Keys.ARROW_RIGHT * 2)
        current = self.script("""
            const id = document.getElementById('output').getAttribute('aria-activedescendant');
            const e = document.getElementById(id);
            return [e.getAttribute('role'), e.getAttribute('aria-selected'), e.textContent];""")
        self.assertEqual(current, ["option", "true", "one"])

    def test_text_can_be_told_from_its_ground(self):
        """The contrast of the Web Content Accessibility Guidelines, level AA, in both schemes."""
        self.stretch("output", "3").click()
        for scheme in ["light", "dark"]:
            self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
                "features": [{"name": "prefers-color-scheme", "value": scheme}]})
            self.assertEqual(self.script("""
                const light = ([r, g, b]) => {
                    const f = [r, g, b].map(c => (c /= 255) <= 0.03928 ? c / 12.92
                                                                      : ((c + 0.055) / 1.055) ** 2.4);
                    return 0.2126 * f[0] + 0.7152 * f[1] + 0.0722 * f[2];
                };
                const numbers = colour => colour.match(/[0-9.]+/g).map(Number);
                const ground = e => {
                    const colour = numbers(getComputedStyle(e).backgroundColor);
                    return colour.length === 4 && colour[3] === 0 && e.parentElement
                        ? ground(e.parentElement) : colour;
                };
                const poor = [];
                for (const e of document.querySelectorAll('body *')) {
                    if (![...e.childNodes].some(n => n.nodeType === 3 && n.data.trim()) ||
                        e.offsetParent === null)
                        continue;
                    const [a, b] = [numbers(getComputedStyle(e).color), ground(e)].map(light);
                    const contrast = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
                    if (contrast < 4.5)
                        poor.push([e.className, e.textContent, contrast]);
                }
                return poor;"""), [], scheme)
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})

    def test_kinds_differ_without_their_colours(self):
        styles = self.script("""
            return ['copied', 'calculated', 'indentation', 'inserted', 'unused'].map(kind => {
                const e = document.querySelector('.legend .' + kind);
                const {textDecorationLine: line, textDecorationStyle: style, backgroundImage: image,
                       fontStyle} = getComputedStyle(e);
                return [line, style, image.slice(0, 9), fontStyle].join(' ');
            });""")
        self.assertEqual(len(set(styles)), 5, styles)


class Bytes(Page):
    HOSTILE = (b"</script><script>document.title = 'taken'</script><!--<script>\n"
               b"<img src=x onerror=\"document.title = 'taken'\">&amp;&#65;\n"
               b"\x1b[31m \x00 \x7f \xff\xfe \xc3( \xed\xa0\x80 \xf4\x90\x80\x80 \xe2\x82\n"
               b"\xe2\x80\xae turned \xe2\x81\xa6 \xef\xbb\xbf \xc2\x85 \xe2\x80\xa8 end\r\n"
               b"\t\xc3\xa9 \xe4\xb8\xad \xf0\x9f\x98\x80 \xd7\xa9\n"
               b"{{css}} {{data}} `${x}` $& $1\n")

    SHOWN = ("</script><script>document.title = 'taken'</script><!--<script>\n"
             "<img src=x onerror=\"document.title = 'taken'\">&amp;&#65;\n"
             "\\x1b[31m \\x00 \\x7f \\xff\\xfe \\xc3( \\xed\\xa0\\x80 \\xf4\\x90\\x80\\x80 "
             "\\xe2\\x82\n"
             "\\xe2\\x80\\xae turned \\xe2\\x81\\xa6 \\xef\\xbb\\xbf \\xc2\\x85 \\xe2\\x80\\xa8 end"
             "\\x0d\n"
             "\t\u00e9 \u4e2d \U0001f600 \u05e9\n"
             "{{css}} {{data}} `${x}` $& $1\n")

    def test_every_byte_is_shown_and_none_is_obeyed(self):
        self.open({"a.cpp.qz": b"/* " + self.HOSTILE + b"*/"})
        self.assertEqual("".join(self.texts("#output .s")), "/* " + self.SHOWN + "*/")
        self.assertEqual(self.browser.title, "a.cpp and its sources")
        self.assertEqual(self.texts("#output .raw")[:3], ["\\x1b", "\\x00", "\\x7f"])

    def test_an_empty_output_says_so(self):
        self.open({"a.cpp.qz": b"@def unused = 1"})
        self.assertEqual(self.texts("#output .empty"), ["a.cpp is empty."])
        self.pane("output").send_keys(Keys.ARROW_RIGHT, Keys.ENTER, "n")
        self.assertEqual(self.texts("#source .s"), [])
        self.pane("source").send_keys(Keys.ARROW_RIGHT, Keys.ARROW_DOWN, Keys.END, Keys.ENTER)

    def test_a_long_line_goes_on_in_the_next_row(self):
        line = "".join(f"word{i} " for i in range(1000)) + "end"
        self.open({"a.cpp.qz": line.encode() + b"\nnext\n"})
        numbers = [n.strip() for n in self.texts("#output .number")]
        self.assertEqual(numbers, ["1", *["↪"] * ((len(line)) // 1000), "2"])
        self.pane("needle").send_keys("end", Keys.ENTER)
        self.assertEqual(self.text_of("status"),
                         f"a.cpp:1:{len(line) - 2}: copied from a.cpp.qz:1:{len(line) - 2}")
        self.assertTrue(self.is_in_view("#output .found"))


class Large(Page):
    """An output of more than 5 MB in 80,000 lines."""

    TEXT = b"""\
@def row(number, name) =
{
    { number, "name", @(number * 2), function_of_the_row_with_a_long_name },
}
@let int i = 0
@while (i < 80000)
{
row(@(i), entry)
@let i = i + 1
}
the last line
"""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.page = make_page(pathlib.Path(folder.name), {"a.cpp.qz": cls.TEXT})

    def setUp(self):
        self.show(self.page)
        self.assertGreater(self.script("return outputBytes.length"), 5_000_000)

    def rows(self):
        return self.script("return document.querySelectorAll('.row').length")

    def test_only_what_can_be_seen_is_there(self):
        self.assertLess(self.rows(), 200)
        self.pane("output").send_keys(Keys.END)
        self.expect(True, lambda: "the last line\n" in self.texts("#output .s"))
        self.assertLess(self.rows(), 200)
        self.assertTrue(self.is_in_view("#output .cursor"))

    def test_scrolling_shows_every_part(self):
        for part in [0.25, 0.5, 0.75, 1, 0]:
            self.script("const s = document.getElementById('output');"
                        "s.scrollTop = arguments[0] * (s.scrollHeight - s.clientHeight);", part)
            lines = self.script("return output.rows.lineCount")
            near = part * lines
            self.wait(lambda: any(abs(int(n) - near) < 60
                                  for n in self.texts("#output .number") if n.strip().isdigit()))

    def test_jumps_go_from_one_end_to_the_other(self):
        self.pane("output").send_keys(Keys.END, Keys.ENTER)
        self.assertEqual(self.focused(), "source")
        self.assertTrue(self.is_in_view("#source .cursor"))
        self.pane("output").send_keys(Keys.HOME)
        self.expect(True, lambda: self.is_in_view("#output .cursor"))

    def test_a_macro_body_has_all_of_its_places(self):
        self.stretch("source", ", function_of").click()
        self.expect("place 1 of 80000", lambda: self.text_of("place"))
        self.script("document.getElementById('output').focus()")
        self.pane("output").send_keys("p")
        self.expect("place 80000 of 80000", lambda: self.text_of("place"))
        self.expect(True, lambda: self.is_in_view("#output .cursor"))

    def test_the_search_finds_the_last_line(self):
        self.pane("needle").send_keys("the last line", Keys.ENTER)
        self.expect(["the last line"], lambda: [t.strip() for t in self.texts("#output .found")])
        self.assertTrue(self.is_in_view("#output .found"))


if __name__ == "__main__":
    unittest.main()
