#!/usr/bin/python3
"""Uses a network's pages in Chromium as staff and visitors do, by keyboard where that is new.

Saves a picture of each page in the directory that the variable PICTURES names, if any.
"""

import os
import subprocess
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.wait import WebDriverWait

from served_network import ENVIRONMENT, ServedNetworkTest, own_port

# The address at which visitors find the network; the browser is led to the test's server.
ADDRESS = "192.0.2.10:8000"

# A picture of one point
DOT = b"GIF89a\1\0\1\0\x80\0\0\0\0\0\xff\xff\xff,\0\0\0\0\1\0\1\0\0\2\2D\1\0;"


class PagesTest(ServedNetworkTest):
    @classmethod
    def setUpClass(cls):
        """Start the browser, which is led from a network's address to a port for the servers."""
        super().setUpClass()
        home = tempfile.TemporaryDirectory()
        cls.addClassCleanup(home.cleanup)
        cls.server_port = own_port()
        options = webdriver.ChromeOptions()
        for option in [
                "headless=new", "no-sandbox", "disable-gpu", "disable-quic", "no-first-run",
                "disable-background-networking", "disable-component-update", "disable-sync",
                "disable-dev-shm-usage", "no-proxy-server", f"user-data-dir={home.name}/profile",
                f"host-resolver-rules=MAP {ADDRESS} 127.0.0.1:{cls.server_port}, MAP * ~NOTFOUND, "
                "EXCLUDE 127.0.0.1"]:
            options.add_argument(f"--{option}")
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        service = Service("/usr/bin/chromedriver", env={**ENVIRONMENT, "HOME": home.name})
        cls.browser = webdriver.Chrome(service=service, options=options)
        cls.addClassCleanup(cls.browser.quit)

    def setUp(self):
        super().setUp()
        self.port = self.server_port
        self.browser.delete_all_cookies()

    def resize(self, width):
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": 720, "deviceScaleFactor": 1, "mobile": width < 500})

    def look(self, name):
        """Sees that the page fits, at two widths and with letters twice as large."""
        sizes = [(1280, ""), (360, ""), (360, "200%")]
        for width, letters in sizes:
            self.resize(width)
            self.browser.execute_script(f"document.documentElement.style.fontSize = '{letters}'")
            wide = self.browser.execute_script("return document.documentElement.scrollWidth")
            self.assertLessEqual(wide, width, f"{name} {letters}")
            if "PICTURES" in os.environ and not letters:
                self.browser.save_screenshot(f"{os.environ['PICTURES']}/{name}-{width}.png")
        self.browser.execute_script("document.documentElement.style.fontSize = ''")
        self.resize(1280)
        self.assertEqual(self.browser.get_log("browser"), [], name)

    def visit(self, path):
        self.browser.get(f"http://{ADDRESS}{path}")

    def shows(self, text):
        WebDriverWait(self.browser, 60, 0.05, ignored_exceptions=[Exception]).until(
            lambda browser: text in browser.find_element(By.TAG_NAME, "main").text, text)

    def press(self, name, tabs=10):
        """Reaches what bears the name by the Tab key and presses it. The Tabs are sent so many at a
        time, for each call of the driver is slow: a script stops them there. Where scripts are off,
        send one at a time."""
        self.browser.execute_script("""
            window.onkeydown = event => {
                const {textContent, ariaLabel, value} = document.activeElement;
                if (event.key === "Tab" &&
                    [textContent.trim(), ariaLabel, value].includes(arguments[0])) {
                    event.preventDefault();
                }
            };""", name)
        for _ in range(150 // tabs):
            webdriver.ActionChains(self.browser).send_keys(Keys.TAB * tabs).perform()
            focused = self.browser.switch_to.active_element
            if name in (focused.text, focused.accessible_name):
                focused.send_keys(Keys.ENTER)
                return
        self.fail(f"the keyboard does not reach « {name} »")

    def fill(self, label, text):
        field = self.browser.find_element(By.XPATH, f"//label[starts-with(., '{label}')]")
        self.browser.find_element(By.ID, field.get_attribute("for")).send_keys(str(text))

    def log_in_by_page(self):
        self.visit("/")
        self.press("Se connecter")
        self.shows("Mot de passe")
        self.look("connexion")
        self.fill("Pseudo", "zoé")
        self.fill("Mot de passe", "un mot de passe\n")
        self.shows("Proposer des fichiers")

    def test_pages(self):
        for number in range(50):
            self.offer(f"Fiche {number:02}.pdf", "%PDF")
        (self.offered / "Point.gif").write_bytes(DOT)
        os.utime(self.offered / "Point.gif", (10**9, 10**9))
        (self.project / "nom.txt").write_text("Atelier de l'été", "utf-8")
        lesson = self.project / "Leçon <1> & 2.txt"
        lesson.write_text("La leçon", "utf-8")
        self.make_account()
        self.start_server()
        self.look_around()
        self.log_in_by_page()
        self.look("page-equipe")
        self.offer_and_remove(lesson)
        self.visit("/?page=2")
        self.press("Ouvrir la remise")
        self.shows("Ouverte")
        staff = self.browser.get_cookies()
        self.browser.delete_all_cookies()
        self.hand_in_twice(lesson)
        self.browser.delete_all_cookies()
        for cookie in staff:
            self.browser.add_cookie(cookie)
        self.remove_what_was_handed_in()
        self.project_the_address()
        self.log_out()

    def look_around(self):
        self.visit("/ressources/Point.gif")
        self.assertEqual(self.browser.execute_script("return document.images[0].naturalWidth"), 1)
        self.assertEqual(self.browser.get_log("browser"), [])
        self.visit("/")
        self.shows("Bienvenue.txt")
        self.look("page")
        self.assertEqual(self.browser.get_cookies(), [])
        self.press("Suivante")
        self.shows("Page 2 sur 2")

    def offer_and_remove(self, lesson):
        self.fill("Fichiers", lesson)
        self.press("Envoyer")
        self.shows("« Leçon <1> & 2.txt » est maintenant proposé.")
        self.visit("/?page=2")
        self.press("Supprimer Leçon <1> & 2.txt")
        self.shows("Il sera effacé")
        self.look("supprimer")
        self.press("Supprimer")
        self.shows("a été supprimé.")
        self.assertFalse((self.offered / lesson.name).exists())

    def hand_in_twice(self, lesson):
        self.visit("/")
        self.press("Remettre des fichiers")
        self.fill("Votre nom", "Léa Martin")
        for _ in range(2):  # the name stays
            self.fill("Fichiers", lesson)
            self.press("Remettre")
            self.shows("a bien été remis")
        self.look("remettre")
        self.assertEqual((self.handed_in / "Léa Martin — Leçon <1> & 2 (2).txt").read_text("utf-8"),
                         "La leçon")

    def remove_what_was_handed_in(self):
        self.visit("/remis/")
        self.shows("Léa Martin, le ")
        self.look("remis")
        self.press("Supprimer Léa Martin — Leçon <1> & 2.txt")
        self.press("Supprimer")
        self.shows("a été supprimé.")
        self.assertEqual(len(list(self.handed_in.glob("[!.]*"))), 1)

    def project_the_address(self):
        self.press("Adresse à projeter")
        self.shows(f"http://127.0.0.1:{self.port}")  # this server's own, whatever was asked
        self.look("adresse")
        tall = self.browser.execute_script("return document.documentElement.scrollHeight")
        code = self.browser.find_element(By.CSS_SELECTOR, ".code").screenshot_as_png
        url = subprocess.check_output(["zbarimg", "--quiet", "--raw", "png:-"], input=code).decode()
        self.assertEqual((tall, url), (720, f"http://127.0.0.1:{self.port}/\n"))

    def log_out(self):
        self.visit("/")
        self.visit("/admin/logout/")  # as a link leads there, in the administration
        self.shows("Rester connecté")
        self.look("deconnexion")
        self.press("Se déconnecter")
        self.shows("Fichiers proposés")
        self.press("Se connecter")
        self.shows("Mot de passe")

    def large_file(self, name, megabytes):
        path = self.project / name
        with path.open("wb") as file:
            file.truncate(megabytes << 20)
        return path

    def drop(self):
        """Drops a file on the form, as some browsers do: on a text in it."""
        self.browser.execute_script("""
            const dropped = new DataTransfer();
            dropped.items.add(new File(["x"], "glissé.txt"));
            document.querySelector("label[for=fichier]").firstChild.dispatchEvent(new DragEvent(
                "drop", {bubbles: true, cancelable: true, dataTransfer: dropped}));""")

    def throttle(self, bytes_a_second):
        self.browser.execute_cdp_cmd("Network.enable", {})
        self.browser.execute_cdp_cmd("Network.emulateNetworkConditions", {
            "offline": False, "latency": 0, "downloadThroughput": -1,
            "uploadThroughput": bytes_a_second})

    def test_sending(self):
        """With progress, a cut and too much; without JavaScript; after the end of a log-in."""
        self.bound("HANDED_IN_FILE_BYTES", 6 << 20)
        self.open_hand_in()
        self.make_account()
        self.start_server()
        self.visit("/remettre/")
        self.send_with_a_cut()
        self.send_too_much()
        self.browser.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": True})
        self.visit("/remettre/")
        self.fill("Fichiers", self.large_file("sans.bin", 1))
        self.press("Remettre", tabs=1)
        self.shows("« sans.bin » a bien été remis")
        self.browser.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": False})
        self.log_in_by_page()
        self.browser.delete_cookie("session_Atelier")
        self.fill("Fichiers", self.large_file("plan.odt", 1))
        self.press("Envoyer")
        self.shows("Votre connexion a pris fin")

    def send_with_a_cut(self):
        self.fill("Votre nom", "Léa")
        self.fill("Fichiers", self.large_file("film.mp4", 5))
        self.throttle(200_000)
        self.press("Remettre")
        self.shows("Kio/s")
        self.drop()  # is not taken now, and the progress stays
        self.shows("Kio/s")
        self.look("envoi")
        self.server.kill()
        self.server.wait()
        self.shows("L'envoi a été coupé")
        self.browser.get_log("browser")
        self.look("envoi-coupe")
        self.start_server()
        self.press("Remettre")
        self.shows("Kio/s")
        self.press("Annuler")
        self.shows("L'envoi est annulé")
        self.throttle(-1)
        self.press("Remettre")
        self.shows("« film.mp4 » a bien été remis")
        self.assertEqual((self.handed_in / "Léa — film.mp4").stat().st_size, 5 << 20)

    def send_too_much(self):
        self.fill("Fichiers", self.large_file("long.mp4", 7))
        self.press("Remettre")
        self.shows("Trop gros : 7 Mio en tout")
        self.drop()
        self.press("Remettre")
        self.shows("« glissé.txt » a bien été remis")


if __name__ == "__main__":
    unittest.main()
