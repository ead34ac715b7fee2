#!/usr/bin/env python3
"""Runs a command and appends what it took to a file, one line of figures between tabs:
LABEL, exit status, wall seconds, CPU seconds, peak memory in bytes, bytes read, bytes written.

Usage: run-measured.py FILE LABEL COMMAND [ARGUMENT ...]

The figures are the kernel's own, of the command and all of its threads and finished children. When the command has
ended it is first left unreaped (waitid with WNOWAIT): /proc/PID/io then still counts every byte that went through
read and write, in the cache or not (rchar, wchar; files that are mapped into memory do not count). wait4 then tells
its CPU time and its largest resident set. That one is never below what this program itself takes, some 10 MB: a new
program inherits the mark.
"""
import os
import sys
import time


def main():
    file, label, *command = sys.argv[1:]
    start = time.monotonic()
    pid = os.posix_spawnp(command[0], command, os.environ)
    os.waitid(os.P_PID, pid, os.WEXITED | os.WNOWAIT)
    wall = time.monotonic() - start
    with open(f"/proc/{pid}/io", encoding="ascii") as counters:
        io = dict(line.split(": ") for line in counters.read().splitlines())
    _, status, usage = os.wait4(pid, 0)
    status = os.waitstatus_to_exitcode(status)
    cpu = usage.ru_utime + usage.ru_stime
    with open(file, "a", encoding="utf-8") as figures:
        print(label, status, f"{wall:.4f}", f"{cpu:.4f}", usage.ru_maxrss * 1024, io["rchar"], io["wchar"],
              sep="\t", file=figures)
    return status


if __name__ == "__main__":
    sys.exit(main())
