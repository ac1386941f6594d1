"""A visitor of a network, who asks from an address of his own and keeps the cookies he gets."""

import http.client
import os
import re
from urllib.parse import urlencode


class Visitor:
    """HOST and PORT are the network's, ADDRESS is the visitor's own."""

    def __init__(self, host, port=None, address="127.0.0.1"):
        self.host, self.port, self.address = host, port, address
        self.cookies = {}

    def ask(self, path, body=None, kind="", method=None, **headers):
        """The status, headers and body of the answer. Headers are named with _ for -."""
        connection = http.client.HTTPConnection(self.host, self.port, 120, (self.address, 0))
        headers = {name.replace("_", "-"): value for name, value in headers.items()}
        try:
            connection.request(method or ("POST" if body else "GET"), path, body, {
                "Cookie": "; ".join(f"{name}={value}" for name, value in self.cookies.items()),
                "Content-Type": kind,
                "X-Real-IP": os.urandom(8).hex(),  # which nobody may choose himself
                **headers})
            answer = connection.getresponse()
            for cookie in answer.headers.get_all("Set-Cookie", ()):
                self.cookies.update([cookie.split(";")[0].split("=", 1)])
            return answer.status, answer.headers, answer.read()
        finally:
            connection.close()

    def send(self, name, content, path="/depot/", field="fichiers", more=(), **fields):
        """Sends a file, and MORE pairs like it, by a page's form, whose token must be among the
        cookies."""
        part = "--B\r\nContent-Disposition: form-data; name="
        fields = {"csrfmiddlewaretoken": self.cookies.get("csrf_Atelier", ""), **fields}
        body = ("".join(f'{part}"{key}"\r\n\r\n{value}\r\n' for key, value in fields.items())
                + "".join(f'{part}"{field}"; filename="{file}"\r\n\r\n{text}\r\n'
                          for file, text in [(name, content), *more]) + "--B--\r\n")
        return self.ask(path, body.encode(), "multipart/form-data; boundary=B")

    def log_in_token(self):
        """Asks for the form to log in. Returns the token that it has to come back with."""
        page = self.ask("/admin/login/")[2].decode()
        return re.search('csrfmiddlewaretoken" value="(.*?)"', page)[1]

    def log_in(self, account, password="un mot de passe", token=None):
        return self.ask("/admin/login/", urlencode({
            "csrfmiddlewaretoken": token or self.log_in_token(), "username": account,
            "password": password}), "application/x-www-form-urlencoded")
