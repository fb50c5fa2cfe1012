"""Runs a command that can write in one folder only: cage.py FOLDER READY FILE_LIMIT COMMAND ...

The command sees the machine read-only, has no network and no rights beyond those of the files' owner.
READY is a descriptor that closes as the command begins; FILE_LIMIT is in bytes, -1 is none."""

import ctypes
import os
import resource
import signal
import sys

NEW_MOUNTS, NEW_NETWORK = 0x20000, 0x40000000
BIND, RECURSIVE, PRIVATE = 0x1000, 0x4000, 0x40000
MOUNT_SETATTR, HERE, ALL_BELOW, READ_ONLY = 442, -100, 0x8000, 1
DROP_FROM_BOUNDING_SET, LAST_CAPABILITY = 24, 40

libc = ctypes.CDLL(None, use_errno=True)


class Attributes(ctypes.Structure):
    _fields_ = [(name, ctypes.c_uint64) for name in ("set", "clear", "propagation", "namespace")]


def must(result):
    if result != 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))


def change(path, flags, **bits):
    attributes = Attributes(**bits)
    must(libc.syscall(MOUNT_SETATTR, HERE, path, flags, ctypes.byref(attributes), ctypes.sizeof(attributes)))


def mount_memory(folder, size):
    """A file system in memory of so many bytes."""
    must(libc.mount(b"tmpfs", os.fsencode(folder), b"tmpfs", 0, b"mode=755,size=%d" % size))


def unmount(folder):
    must(libc.umount2(os.fsencode(folder), 2))


def main():
    folder, ready, file_limit, command = os.fsencode(sys.argv[1]), int(sys.argv[2]), int(sys.argv[3]), sys.argv[4:]
    must(libc.unshare(NEW_MOUNTS | NEW_NETWORK))
    must(libc.mount(b"none", b"/", None, RECURSIVE | PRIVATE, None))
    must(libc.mount(folder, folder, None, BIND, None))
    change(b"/", ALL_BELOW, set=READ_ONLY)
    change(folder, 0, clear=READ_ONLY)
    for capability in range(LAST_CAPABILITY + 1):
        libc.prctl(DROP_FROM_BOUNDING_SET, capability, 0, 0, 0)
    os.chdir(folder)
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    if file_limit >= 0:
        resource.setrlimit(resource.RLIMIT_FSIZE, (file_limit, file_limit))
    for ignored in (signal.SIGXFSZ, signal.SIGPIPE, signal.SIGINT):  # by Python, by a shell in the background
        signal.signal(ignored, signal.SIG_DFL)
    os.set_inheritable(ready, False)
    os.execv(command[0], command)


if __name__ == "__main__":
    main()
