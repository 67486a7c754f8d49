#!/usr/bin/env python3
"""Servers over TLS, each on a port of its own, with certificates of an authority made for this run.

Usage: tls_server.py FOLDER

Makes ca.pem, client.pem and client.key (passphrase "secret") in the folder and prints one line:
"ready", the ports of a usual server, of one that asks for a client's certificate and of one that
knows TLS 1.1 alone, and the pin of their common key. Every POST is answered with 200 and {}. Runs
until it is killed.
"""

import base64
import hashlib
import http.server
import signal
import ssl
import subprocess
import sys
import threading
from pathlib import Path

NEW_KEY = ["-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1"]


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_POST(self) -> None:
        self.rfile.read(int(self.headers["Content-Length"]))
        self.send_response(200)
        self.send_header("Content-Length", "2")
        self.end_headers()
        self.wfile.write(b"{}")

    def log_message(self, *_) -> None:
        pass


class Server(http.server.ThreadingHTTPServer):
    def handle_error(self, *_) -> None:
        pass  # a handshake that a client refuses is what is tested


def openssl(*arguments: str, given: bytes = b"") -> bytes:
    command = ["openssl", *arguments]
    return subprocess.run(command, input=given, capture_output=True, check=True).stdout


def make_authority(folder: Path) -> None:
    openssl("req", "-x509", "-nodes", *NEW_KEY, "-subj", "/CN=Test Authority", "-days", "2",
            "-keyout", f"{folder}/ca.key", "-out", f"{folder}/ca.pem")


def make_certificate(folder: Path, name: str, key_options: list[str]) -> None:
    request = openssl("req", "-new", *key_options, *NEW_KEY, "-subj", f"/CN={name}",
                      "-keyout", f"{folder}/{name}.key")
    extensions = folder / "extensions"
    extensions.write_text("subjectAltName=IP:127.0.0.1\n")
    certificate = openssl("x509", "-req", "-CA", f"{folder}/ca.pem", "-CAkey", f"{folder}/ca.key",
                          "-CAcreateserial", "-days", "2", "-extfile", str(extensions),
                          given=request)
    (folder / f"{name}.pem").write_bytes(certificate)


def pin_of(certificate: Path) -> str:
    key = openssl("x509", "-in", str(certificate), "-noout", "-pubkey")
    der = openssl("pkey", "-pubin", "-outform", "der", given=key)
    return "sha256//" + base64.b64encode(hashlib.sha256(der).digest()).decode()


def serve(context: ssl.SSLContext) -> int:
    server = Server(("127.0.0.1", 0), Handler)
    server.socket = context.wrap_socket(server.socket, server_side=True,
                                        do_handshake_on_connect=False)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_port


def context_of(folder: Path) -> ssl.SSLContext:
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(folder / "server.pem", folder / "server.key")
    return context


def main() -> None:
    folder = Path(sys.argv[1])
    make_authority(folder)
    make_certificate(folder, "server", ["-nodes"])
    make_certificate(folder, "client", ["-passout", "pass:secret"])
    asking = context_of(folder)
    asking.verify_mode = ssl.CERT_REQUIRED
    asking.load_verify_locations(folder / "ca.pem")
    old = context_of(folder)
    old.set_ciphers("DEFAULT:@SECLEVEL=0")
    old.minimum_version = ssl.TLSVersion.TLSv1_1
    old.maximum_version = ssl.TLSVersion.TLSv1_1
    ports = [serve(context) for context in (context_of(folder), asking, old)]
    print("ready", *ports, pin_of(folder / "server.pem"), flush=True)
    signal.pause()


main()
