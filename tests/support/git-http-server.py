#!/usr/bin/python3
"""git-http-server.py ROOT URL_FILE [CRAFTED]: serves ROOT's repositories on a free
127.0.0.1 port through the real `git http-backend` (as CGI), so the Windows clone tests talk
to the server code a real git host runs; writes the base URL into URL_FILE once it listens.

The repository crafted/NAME is served from CRAFTED/NAME/{tip,pack} instead, framed as
http-backend frames a depth-1 fetch, so a pack real git would never send reaches the
client exactly as one it would."""
import http.server
import os
import subprocess
import sys

CRAFTED_PREFIX = "/crafted/"
SIDE_BAND_DATA = 65515


def pkt_line(payload: bytes) -> bytes:
    return b"%04x" % (len(payload) + 4) + payload


class GitHandler(http.server.BaseHTTPRequestHandler):
    def do_GET(self) -> None:
        self.run_backend(b"")

    def do_POST(self) -> None:
        self.run_backend(self.rfile.read(int(self.headers.get("Content-Length") or 0)))

    def reply(self, content_type: str, payload: bytes) -> None:
        self.send_response(200)
        self.send_header("Content-Type", content_type)
        self.send_header("Content-Length", str(len(payload)))
        self.end_headers()
        self.wfile.write(payload)

    def serve_crafted(self, path: str) -> None:
        name, _, operation = path[len(CRAFTED_PREFIX):].partition(".git/")
        folder = os.path.join(sys.argv[3], os.path.basename(name))
        if not os.path.isdir(folder) or operation not in ("info/refs", "git-upload-pack"):
            self.send_error(404)
            return
        with open(os.path.join(folder, "tip"), "rb") as tip_file:
            tip = tip_file.read().strip()
        if operation == "info/refs":
            self.reply("application/x-git-upload-pack-advertisement",
                       pkt_line(b"# service=git-upload-pack\n") + b"0000" +
                       pkt_line(tip + b" HEAD\0side-band-64k ofs-delta shallow\n") +
                       pkt_line(tip + b" refs/heads/main\n") + b"0000")
            return
        with open(os.path.join(folder, "pack"), "rb") as pack_file:
            pack = pack_file.read()
        reply = pkt_line(b"shallow " + tip + b"\n") + b"0000" + pkt_line(b"NAK\n")
        for at in range(0, len(pack), SIDE_BAND_DATA):
            reply += pkt_line(b"\1" + pack[at:at + SIDE_BAND_DATA])
        self.reply("application/x-git-upload-pack-result", reply + b"0000")

    def run_backend(self, body: bytes) -> None:
        path, _, query = self.path.partition("?")
        if path.startswith(CRAFTED_PREFIX) and len(sys.argv) > 3:
            self.serve_crafted(path)
            return
        env = {"PATH": os.environ["PATH"], "GIT_PROJECT_ROOT": sys.argv[1], "GIT_HTTP_EXPORT_ALL": "1",
               "GIT_CONFIG_NOSYSTEM": "1", "HOME": sys.argv[1], "REQUEST_METHOD": self.command,
               "PATH_INFO": path, "QUERY_STRING": query, "CONTENT_LENGTH": str(len(body)),
               "CONTENT_TYPE": self.headers.get("Content-Type", "")}
        result = subprocess.run(["git", "http-backend"], input=body, env=env, capture_output=True, check=False)
        head, _, payload = result.stdout.partition(b"\r\n\r\n")
        headers = [line.partition(":")[::2] for line in head.decode("latin-1").splitlines()]
        status = [int(value.split()[0]) for name, value in headers if name.lower() == "status"]
        self.send_response(status[0] if status else 200)
        for name, value in headers:
            if name.lower() != "status":
                self.send_header(name, value.strip())
        self.send_header("Content-Length", str(len(payload)))
        self.end_headers()
        self.wfile.write(payload)


if __name__ == "__main__":
    sys.argv[1] = os.path.abspath(sys.argv[1])
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), GitHandler)
    with open(sys.argv[2] + ".tmp", "w") as out:
        out.write("http://127.0.0.1:%d" % server.server_address[1])
    os.replace(sys.argv[2] + ".tmp", sys.argv[2])
    server.serve_forever()
