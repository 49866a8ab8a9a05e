#!/usr/bin/python3
"""Answers every request with what Django made of it: path, query, form, files, each value as the hexadecimal digits of its
bytes. Prints the port it listens on, and ends with the process that started it."""

import os
import socketserver
import threading
import time
from wsgiref.simple_server import ServerHandler, WSGIRequestHandler, WSGIServer

from django.conf import settings
from django.core.wsgi import get_wsgi_application
from django.http import JsonResponse
from django.urls import re_path

parent = os.getppid()
settings.configure(
    ALLOWED_HOSTS=["127.0.0.1"],
    ROOT_URLCONF=__name__,
    SECRET_KEY="of no use here",
    # The texts are as long as the test wants.
    DATA_UPLOAD_MAX_MEMORY_SIZE=None,
    LOGGING_CONFIG=None,
)


def digits(value):
    return value.encode("utf-8", "surrogatepass").hex()


def fields(values):
    return {name: digits(",".join(values.getlist(name))) for name in values}


def echo(request):
    answer = {
        "success": True, "error": None, "result": "1", "results": [], "more": None, "id": 42,
        "method": request.method,
        "path": request.path,
        "query": fields(request.GET),
        "form": fields(request.POST),
        "files": {name: file.read().hex() for name, file in request.FILES.items()},
        "file_names": {name: file.name for name, file in request.FILES.items()},
    }
    return JsonResponse(answer)


urlpatterns = [re_path("(?s).*", echo)]


class LongLineHandler(WSGIRequestHandler):
    """The reference handler, but for its bound on the request line, which is no part of Django."""

    def handle(self):
        self.raw_requestline = self.rfile.readline(16 * 1024 * 1024)
        if not self.parse_request():
            return
        handler = ServerHandler(self.rfile, self.wfile, self.get_stderr(), self.get_environ(), multithread=True)
        handler.request_handler = self
        handler.run(self.server.get_app())

    def log_message(self, *_):
        pass


class Server(socketserver.ThreadingMixIn, WSGIServer):
    daemon_threads = True

    def server_bind(self):
        # Without the look-up of the host's name.
        socketserver.TCPServer.server_bind(self)
        self.server_name, self.server_port = "127.0.0.1", self.server_address[1]
        self.setup_environ()


server = Server(("127.0.0.1", 0), LongLineHandler)
server.set_app(get_wsgi_application())
threading.Thread(target=server.serve_forever, daemon=True).start()
print(server.server_port, flush=True)
while os.getppid() == parent:
    time.sleep(0.5)
