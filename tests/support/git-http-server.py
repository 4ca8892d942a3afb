#!/usr/bin/python3
"""git-http-server.py ROOT URL_FILE: serves ROOT's repositories on a free 127.0.0.1 port
through the real `git http-backend` (as CGI), so the Windows clone tests talk to the server
code a real git host runs; writes the base URL into URL_FILE once it listens."""
import http.server
import os
import subprocess
import sys


class GitHandler(http.server.BaseHTTPRequestHandler):
    def do_GET(self) -> None:
        self.run_backend(b"")

    def do_POST(self) -> None:
        self.run_backend(self.rfile.read(int(self.headers.get("Content-Length") or 0)))

    def run_backend(self, body: bytes) -> None:
        path, _, query = self.path.partition("?")
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
