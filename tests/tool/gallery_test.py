"""Opens a gallery page in headless Chromium: gallery_test.py TOOL PHOTO CHROMIUM CHROMEDRIVER"""
import json
import os
import subprocess
import sys
import tempfile
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.wait import WebDriverWait

AXE = os.environ.get("AXE_CORE")  # its axe.min.js
FLAGS = ("--headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking "
         "--disable-component-update --disable-sync")
ALL_LOADED = """return Array.from(document.images).every((image) => {
  image.loading = "eager";
  return image.complete && image.naturalWidth > 0;
});"""


def violations(browser):
    """None that axe-core finds, where it is installed (npm)."""
    if AXE:
        browser.execute_script(Path(AXE).read_text())
        found = browser.execute_async_script("axe.run().then((result) => arguments[arguments.length - 1](result.violations))")
        assert not found, [(rule["id"], rule["nodes"][0]["html"]) for rule in found]


def check_page(browser, address, width):
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                            {"width": width, "height": 844, "deviceScaleFactor": 1, "mobile": width < 500})
    browser.get(address)
    wait = WebDriverWait(browser, 120, poll_frequency=0.05)
    wait.until(lambda b: b.execute_script(ALL_LOADED), "not every picture loaded")
    assert all(image.get_attribute("alt") for image in browser.find_elements("css selector", ".compare img"))
    page_width = browser.execute_script("return document.documentElement.scrollWidth")
    assert page_width <= width, f"{page_width} pixels wide at {width}"

    name, after, slider = (browser.find_element("id", id) for id in ("name", "after", "slider"))
    shown = set()
    cards = browser.find_elements("class name", "card")
    for card in cards:
        browser.execute_script("arguments[0].click()", card)
        wait.until(lambda b: b.execute_script(ALL_LOADED), "a chosen picture did not load")
        shown.add(after.get_attribute("src"))
        assert card.get_attribute("aria-pressed") == "true" and card.text.startswith(name.text), name.text
    entries = json.loads(browser.find_element("css selector", "script[type='application/json']").get_attribute("textContent"))
    assert len(shown) == len(cards) == len(entries) > 30, "cards are missing or share a picture"
    classic = browser.find_elements("css selector", "#classic > .card")
    assert len(classic) == sum(entry["group"] == "classic" for entry in entries)

    # The keyboard alone reaches everything: first a link past the cards, then all controls, each once.
    browser.execute_script("document.activeElement.blur(); window.getSelection().removeAllRanges()")
    browser.get(address)
    wait.until(lambda b: b.execute_script(ALL_LOADED), "not every picture loaded")
    name, after, slider = (browser.find_element("id", id) for id in ("name", "after", "slider"))
    stops = []
    for _ in range(len(cards) + 10):
        browser.switch_to.active_element.send_keys(Keys.TAB)
        stop = browser.execute_script("const e = document.activeElement; return e.className || e.id || e.tagName")
        if stop == "BODY":
            break
        stops.append(stop)
    assert stops[:4] == ["skip", "previous", "next", "slider"] and stops[4:4 + len(cards)] == ["card"] * len(cards), stops
    browser.find_element("class name", "skip").send_keys(Keys.ENTER)
    assert browser.execute_script("return document.activeElement.id") == "end"
    before = name.text
    browser.find_element("tag name", "body").send_keys(Keys.ARROW_RIGHT)
    assert name.text != before
    browser.find_element("tag name", "body").send_keys(Keys.ARROW_LEFT)
    assert name.text == before
    violations(browser)

    def clipped():
        return float(after.value_of_css_property("clip-path").removeprefix("inset(0px 0px 0px ").removesuffix("%)"))

    for key, percent in ((Keys.HOME, 0), (Keys.ARROW_RIGHT, 0.5), (Keys.END, 100)):
        slider.send_keys(key)
        assert clipped() == percent, (key, clipped())
    drag = webdriver.ActionChains(browser).move_to_element(slider).click_and_hold()
    drag.move_by_offset(-slider.rect["width"] // 4, 0).release().perform()
    assert 20 < clipped() < 30, clipped()


def check_folder(browser, folder, tool, photo):
    """An index, and a page for each photo, whatever its name."""
    photos = Path(folder, "some photos")
    photos.mkdir()
    for name in ("a.jpg", "b #1%.jpg"):
        Path(photos, name).write_bytes(Path(photo).read_bytes())
    subprocess.run([tool, "gallery", photos, f"{folder}/pages"], check=True)
    browser.get(Path(folder, "pages/index.html").as_uri())
    WebDriverWait(browser, 60).until(lambda b: b.execute_script(ALL_LOADED), "not every picture loaded")
    violations(browser)
    links = browser.find_elements("tag name", "a")
    assert [link.text for link in links] == ["a.jpg", "b #1%.jpg"]
    links[1].send_keys(Keys.ENTER)
    WebDriverWait(browser, 60).until(lambda b: b.execute_script(ALL_LOADED), "not every picture loaded")
    assert browser.title.startswith("b #1%.jpg under") and not browser.get_log("browser")
    browser.find_element("link text", "All photos").send_keys(Keys.ENTER)
    assert browser.title.startswith("some photos")


def main(tool, photo, chromium, chromedriver):
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        subprocess.run([tool, "gallery", photo, f"{folder}/page"], check=True)
        options = webdriver.ChromeOptions()
        options.binary_location = chromium
        options.set_capability("goog:loggingPrefs", {"performance": "ALL", "browser": "ALL"})
        for flag in (*FLAGS.split(), f"--user-data-dir={folder}/profile"):
            options.add_argument(flag)
        with webdriver.Chrome(service=webdriver.chrome.service.Service(chromedriver), options=options) as browser:
            address = Path(folder, "page/index.html").as_uri()
            for width in (1280, 390):
                check_page(browser, address, width)
            check_folder(browser, folder, tool, photo)
            assert not (log := browser.get_log("browser")), log
            events = [json.loads(entry["message"])["message"] for entry in browser.get_log("performance")]
            urls = {event["params"]["request"]["url"] for event in events
                    if event["method"] == "Network.requestWillBeSent" and event["params"]["documentURL"].startswith(address)}
            assert len(urls) >= 71 and all(url.startswith("file:") for url in urls), urls


main(*sys.argv[1:])
