"""consumer.py LIBRARY URL FOLDER: asks for a verdict through ctypes, with nothing but the C header's word."""

import ctypes
import sys
import threading


class Options(ctypes.Structure):
    _fields_ = [
        ("size", ctypes.c_size_t),
        ("application", ctypes.c_char_p),
        ("application_version", ctypes.c_char_p),
        ("data_folder", ctypes.c_char_p),
        ("may_start_services", ctypes.c_int32),
        ("has_own_motion", ctypes.c_int32),
    ]


class Verdict(ctypes.Structure):
    _fields_ = [
        ("size", ctypes.c_size_t),
        ("level", ctypes.c_char_p),
        ("level_number", ctypes.c_int32),
        ("http_status", ctypes.c_int32),
        ("signed_risk", ctypes.c_char_p),
        ("request_id", ctypes.c_char_p),
        ("reason", ctypes.c_char_p),
        ("elapsed_ms", ctypes.c_int64),
    ]


def main(path, url, folder):
    library = ctypes.CDLL(path)
    options = Options(ctypes.sizeof(Options), b"com.bank.script", None, folder.encode(), 0, 0)
    assert library.quorvance_use_options(ctypes.byref(options)) == 0
    assert library.quorvance_setup(url.encode(), b"user-17") == 0
    came = threading.Event()
    answers = []

    @ctypes.CFUNCTYPE(None, ctypes.POINTER(Verdict), ctypes.c_void_p)
    def on_verdict(verdict, context):
        assert verdict.contents.size >= ctypes.sizeof(Verdict) and context == 7
        answers.append((verdict.contents.level.decode(), verdict.contents.reason.decode()))
        came.set()

    login = b'{"checkpoint_type":"LOGIN","user":{"user_id":"user-17"}}'
    no_deadline = ctypes.c_int64(-1)
    assert library.quorvance_get_risk(login, no_deadline, on_verdict, ctypes.c_void_p(7)) == 0
    assert came.wait(20)
    assert library.quorvance_shutdown(ctypes.c_int64(20000)) == 0
    print(", ".join(answers[0]))


if __name__ == "__main__":
    main(*sys.argv[1:])
