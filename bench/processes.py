"""Processes that a measurement starts and that end with it: a virtual display, simulated cameras, programs."""

import contextlib
import json
import os
import subprocess
import tempfile

FIRST_ADDRESS = 2  # of the simulated cameras, in 10.77.0.0/24
START_LIMIT_S = 20


class StartError(Exception):
    """Something that the measurement needs did not start."""


@contextlib.contextmanager
def started(command, **options):
    """A process that is ended with the block."""
    process = subprocess.Popen(command, **options)
    try:
        yield process
    finally:
        if process.poll() is None:
            process.terminate()
            try:
                process.wait(timeout=10)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()


@contextlib.contextmanager
def virtual_display():
    """An X server of its own; gives the environment of programs that show on it, with settings of their own."""
    read_end, write_end = os.pipe()
    command = ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x800x24+32", "-nolisten", "tcp"]
    with tempfile.TemporaryDirectory() as home, os.fdopen(read_end) as numbers, \
            started(command, pass_fds=[write_end], stderr=subprocess.DEVNULL):
        os.close(write_end)
        number = numbers.readline().strip()
        if not number:
            raise StartError("the virtual display did not start")
        yield {**os.environ, "DISPLAY": f":{number}", "QT_QPA_PLATFORM": "xcb",
               "XDG_CONFIG_HOME": f"{home}/config", "XDG_DATA_HOME": f"{home}/data"}


def add_address(address):
    subprocess.run(["ip", "address", "replace", f"{address}/24", "brd", "+", "dev", "vesk1"], check=True)


@contextlib.contextmanager
def simulated_cameras(build, count, *options):
    """Cameras of one process; gives their addresses once all of them answer."""
    addresses = [f"10.77.0.{FIRST_ADDRESS + number}" for number in range(count)]
    command = [f"{build}/sim/q4sim", *options]
    for address in addresses:
        add_address(address)
        command += ["--address", address]
    with started(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True) as process:
        for _ in addresses:
            line = process.stdout.readline()
            if not line.startswith("q4sim: camera "):
                raise StartError(f"the simulated cameras did not start: {line.strip()}")
        yield addresses


def measured(build, environment, *arguments):
    """Starts bench_program; gives the process, whose standard output is one JSON object."""
    return started([f"{build}/bench/bench_program", *map(str, arguments)], env=environment, text=True,
                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)


def result(process, limit_s):
    """The object that bench_program printed."""
    output, _ = process.communicate(timeout=limit_s)
    if process.returncode != 0:
        raise StartError(f"bench_program ended with code {process.returncode}")
    return json.loads(output)
