"""The report of a scan, in a real browser: it draws, turns, measures, and has nothing to complain about.

usage: report_test.py FILE, the report that fringix-sample-report writes."""

import pathlib
import sys
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.support.select import Select
from selenium.webdriver.support.ui import WebDriverWait

FLAGS = [
    "--headless=new", "--no-sandbox", "--use-angle=swiftshader", "--enable-unsafe-swiftshader", "--window-size=1280,800",
    "--disable-background-networking", "--disable-component-update", "--disable-sync", "--no-first-run", "--disable-quic",
]

PIXELS = """
    const bytes = new Uint8Array(canvas.width * canvas.height * 4);
    gl.readPixels(0, 0, canvas.width, canvas.height, gl.RGBA, gl.UNSIGNED_BYTE, bytes);
    let drawn = 0, sum = 0;
    for (let i = 0; i < bytes.length; i += 4) {
      if (bytes[i] === 20 && bytes[i + 1] === 24 && bytes[i + 2] === 29) continue;
      ++drawn;
      sum = (sum * 31 + bytes[i] + 7 * bytes[i + 1] + i) % 1000000007;
    }
    return [drawn, sum];"""

PLACE = """
    const place = toScreen(arguments[0]);
    return [place.x - canvas.clientWidth / 2, place.y - canvas.clientHeight / 2];"""


def open_browser():
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for flag in FLAGS:
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


class Report(unittest.TestCase):
    points = 60002

    @classmethod
    def setUpClass(cls):
        cls.browser = open_browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()

    def setUp(self):
        self.open("")

    def open(self, query):
        self.browser.get(REPORT.as_uri() + query)
        self.wait_for("drawn")

    def data(self, name):
        return self.browser.find_element(By.TAG_NAME, "body").get_attribute("data-" + name)

    def wait_for(self, name, other_than=None):
        WebDriverWait(self.browser, 60).until(lambda _: self.data(name) not in (None, other_than))

    def after_drawing(self, act):
        before = self.data("drawn")
        act()
        self.wait_for("drawn", other_than=before)

    def canvas(self):
        return self.browser.find_element(By.ID, "view")

    def pixels(self):
        """How many pixels of the view are not background, and a sum that tells two views apart."""
        return self.browser.execute_script(PIXELS)

    def click_at(self, point):
        x, y = self.browser.execute_script(PLACE, point)
        click = ActionChains(self.browser).move_to_element_with_offset(self.canvas(), round(x), round(y)).click()
        self.after_drawing(click.perform)

    def test_shows_every_point(self):
        self.assertEqual(int(self.data("points")), self.points)
        self.assertGreater(self.pixels()[0], 50000)

    def test_shows_fewer_points_when_asked(self):
        self.open("?max=1000")
        self.assertLessEqual(int(self.data("points")), 1000)
        self.assertGreater(int(self.data("points")), 900)

    def test_a_drag_turns_the_cloud(self):
        before = self.pixels()
        self.after_drawing(ActionChains(self.browser).drag_and_drop_by_offset(self.canvas(), 150, 60).perform)
        self.assertNotEqual(self.pixels(), before)
        self.after_drawing(self.browser.find_element(By.ID, "home").click)
        self.assertEqual(self.pixels(), before)

    def test_the_wheel_zooms(self):
        before = self.pixels()[0]
        turn = "arguments[0].dispatchEvent(new WheelEvent('wheel', {deltaY: 600, cancelable: true}));"
        self.after_drawing(lambda: self.browser.execute_script(turn, self.canvas()))
        self.assertLess(self.pixels()[0], before)

    def test_each_colour_paints_anew(self):
        colours = Select(self.browser.find_element(By.ID, "colour"))
        self.assertEqual([option.text for option in colours.options], ["depth", "intensity </script>", "error"])
        seen = {tuple(self.pixels())}
        for index in (1, 2):
            self.after_drawing(lambda: colours.select_by_index(index))
            seen.add(tuple(self.pixels()))
        self.assertEqual(len(seen), 3)

    def test_two_clicks_measure_their_distance(self):
        self.click_at([-60, 20, 450])
        self.assertIsNone(self.data("distance"))
        self.click_at([40, 20, 450])
        self.assertAlmostEqual(float(self.data("distance")), 100, delta=0.02)
        self.assertIn("distance 100.0", self.browser.find_element(By.ID, "reading").text)

    def test_a_section_follows_the_clicked_line(self):
        self.browser.find_element(By.ID, "section").click()
        self.click_at([-100, -50, 500])
        self.click_at([100, -50, 540])
        self.assertAlmostEqual(float(self.data("distance")), (200**2 + 40**2) ** 0.5, delta=0.05)
        self.assertAlmostEqual(int(self.data("section")), 201, delta=10)
        self.assertTrue(self.browser.find_element(By.ID, "profile").is_displayed())

    def test_names_are_shown_as_they_are(self):
        self.assertEqual(self.browser.title, "Sample <b>&</b>")
        self.assertEqual(self.browser.find_element(By.TAG_NAME, "h1").text, "Sample <b>&</b>")

    def test_nothing_to_complain_about(self):
        self.browser.get_log("browser")
        self.open("")
        self.assertEqual([entry for entry in self.browser.get_log("browser") if entry["level"] in ("SEVERE", "WARNING")], [])


if __name__ == "__main__":
    REPORT = pathlib.Path(sys.argv.pop()).resolve()
    unittest.main()
