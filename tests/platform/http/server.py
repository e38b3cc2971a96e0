"""A web server on loopback that answers well and badly. Prints its port. usage: server.py [CERTIFICATE KEY]"""

import gzip
import http.server
import json
import ssl
import sys
import threading
import urllib.parse

FORECAST = {"current": {"temperature_2m": 12.3, "wind_speed_10m": 8, "wind_gusts_10m": 15.5, "cloud_cover": 75,
                        "precipitation": 2.5}}
MEGABYTE = b" " * 1_000_000

seen = []  # the request lines, and "closed PATH" when a client went away from a request that is never answered
seen_lock = threading.Lock()


def note(line):
    with seen_lock:
        seen.append(line)


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def reply(self, value, status=200, **headers):
        self.body(json.dumps(value).encode(), status, **headers)

    def body(self, content, status=200, **headers):
        self.head(status, Content_Length=str(len(content)), **headers)
        self.wfile.write(content)

    def head(self, status=200, **headers):
        self.send_response(status)
        for name, value in headers.items():
            self.send_header(name.replace("_", "-"), value)
        self.end_headers()

    def redirect(self, target):
        self.body(b"It has moved.", 302, Location=target)

    def do_CONNECT(self):
        note(self.requestline)
        self.body(b"", 403)

    def do_GET(self):
        note(self.requestline)
        path, _, query = self.path.partition("?")
        name, _, rest = path[1:].partition("/")
        argument = urllib.parse.unquote(rest or query)
        try:
            getattr(self, "get_" + name, self.get_json)(argument)
        except OSError:  # the client had enough
            note("closed " + path)
            self.close_connection = True

    def get_json(self, _):
        self.reply({"answer": "well"})

    def get_prefix(self, path):
        self.reply(FORECAST if path == "v1/forecast" else {"path": path}, Set_Cookie="a=b; Path=/")

    def get_seen(self, _):
        with seen_lock:
            self.reply(seen)

    def get_echo(self, _):
        self.reply({name.lower(): value for name, value in self.headers.items()}, Set_Cookie="visitor=7; Path=/")

    def get_status(self, status):
        self.reply({"status": int(status)}, int(status), WWW_Authenticate="Basic realm=x")

    def get_redirect(self, times):
        self.redirect("/redirect/%d" % (int(times) - 1)) if int(times) else self.get_json("")

    def get_to(self, target):
        self.redirect(target)

    def get_bytes(self, count):
        self.body(b"x" * int(count), Content_Type="application/octet-stream")

    def get_endless(self, _):
        self.head(Transfer_Encoding="chunked")
        while True:
            self.wfile.write(b"%x\r\n%s\r\n" % (len(MEGABYTE), MEGABYTE))

    def get_bomb(self, _):
        self.body(gzip.compress(100 * MEGABYTE, 1), Content_Encoding="gzip")

    def get_silent(self, _):
        self.connection.settimeout(60)
        if not self.connection.recv(1):
            note("closed " + self.path)
        self.close_connection = True

    def get_half(self, _):
        self.head(Content_Length="1000")
        self.wfile.write(b"[" + b" " * 499)
        self.close_connection = True


class Server(http.server.ThreadingHTTPServer):
    def handle_error(self, *_):
        pass


server = Server(("127.0.0.1", 0), Handler)
if sys.argv[1]:
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(sys.argv[1], sys.argv[2])
    server.socket = context.wrap_socket(server.socket, server_side=True, do_handshake_on_connect=False)
print(server.server_port, flush=True)
server.serve_forever()
