"""A browser without a screen, and what a person sees in it of the page."""

import pytest
from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.chrome.service import Service as DriverService
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.support.wait import WebDriverWait

PATIENCE = 60  # seconds; how long a slow machine may take for what is quick


@pytest.fixture(scope="module")
def driver(tmp_path_factory):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic",
                     "--no-first-run", "--disable-background-networking",
                     "--disable-component-update", "--disable-sync", "--window-size=1400,900",
                     f"--user-data-dir={tmp_path_factory.mktemp('chromium')}"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    one = webdriver.Chrome(service=DriverService("/usr/bin/chromedriver"), options=options)
    yield one
    one.quit()


class Page:
    """What a person sees of the page."""

    def __init__(self, driver):
        self.driver = driver

    def open(self, url):
        self.driver.get_log("browser")
        self.driver.get(url)
        self.until(lambda: self.tiles(), "tiles")
        return self

    def until(self, is_true, what):
        def now(_):
            try:
                return is_true()
            except StaleElementReferenceException:
                return False
        return WebDriverWait(self.driver, PATIENCE, 0.05).until(now, f"not seen: {what}")

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def tiles(self):
        return self.all("#node-list > .tile")

    def tile(self, node):
        """The tile of the node; none when it is not shown."""
        found = [one for one in self.tiles()
                 if one.find_element(By.CSS_SELECTOR, ".head .name").text == node]
        return found[0] if found else None

    def says(self, selector, text):
        self.until(lambda: text in self.find(selector).text, f"{text} in {selector}")

    def tile_says(self, node, text):
        self.until(lambda: text in self.tile(node).text, f"{text} in {node}")

    def press(self, *keys):
        ActionChains(self.driver).send_keys(*keys).perform()

    def focused(self):
        return self.driver.switch_to.active_element


@pytest.fixture
def page(driver):
    return Page(driver)
