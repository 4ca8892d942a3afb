#!/usr/bin/python3
"""Serves the repositories under a folder over git's smart HTTP protocol on loopback.

Each request runs the real `git http-backend` as a CGI program, so the Windows clone tests
talk to the same server code a real git host runs, not to replies we recorded ourselves.
Usage: git-http-server.py ROOT URL_FILE   (binds 127.0.0.1 on a free port; writes the
base URL into URL_FILE once it listens).
"""
import http.server
import os
import subprocess
import sys


class GitHandler(http.server.BaseHTTPRequestHandler):
    root = ""

    def do_GET(self) -> None:
        self.run_backend(b"")

    def do_POST(self) -> None:
        length = int(self.headers.get("Content-Length") or 0)
        self.run_backend(self.rfile.read(length))

    def run_backend(self, body: bytes) -> None:
        path, _, query = self.path.partition("?")
        env = {
            "PATH": os.environ.get("PATH", "/usr/bin:/bin"),
            "GIT_PROJECT_ROOT": self.root,
            "GIT_HTTP_EXPORT_ALL": "1",
            "REQUEST_METHOD": self.command,
            "PATH_INFO": path,
            "QUERY_STRING": query,
            "CONTENT_TYPE": self.headers.get("Content-Type", ""),
            "CONTENT_LENGTH": str(len(body)),
            "REMOTE_ADDR": self.client_address[0],
            "GIT_CONFIG_NOSYSTEM": "1",
            "HOME": self.root,
        }
        result = subprocess.run(["git", "http-backend"], input=body, env=env, capture_output=True, check=False)
        head, _, payload = result.stdout.partition(b"\r\n\r\n")
        if not _:
            head, _, payload = result.stdout.partition(b"\n\n")
        status = 200
        headers = []
        for line in head.decode("latin-1").splitlines():
            name, _, value = line.partition(":")
            if name.lower() == "status":
                status = int(value.strip().split()[0])
            elif name:
                headers.append((name, value.strip()))
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(payload)))
        self.end_headers()
        self.wfile.write(payload)

    def log_message(self, format: str, *args: object) -> None:
        sys.stderr.write("%s\n" % (format % args))


def main() -> None:
    GitHandler.root = os.path.abspath(sys.argv[1])
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), GitHandler)
    url = "http://127.0.0.1:%d" % server.server_address[1]
    temporary = sys.argv[2] + ".tmp"
    with open(temporary, "w") as out:
        out.write(url)
    os.replace(temporary, sys.argv[2])
    print(url, flush=True)
    server.serve_forever()


if __name__ == "__main__":
    main()
