#!/usr/bin/env python3
"""Saves of 640x480 colour frames from a camera on the same machine and from a native file. Prints rows as JSON.

All of them write into one folder, which lies where temporary files do. What is compared runs in turn; the
ratio is that of the medians. curl fetches the very run of frames that a native save does; ffmpeg makes of the
mosaic of the frames the uncompressed TIFFs that an image save does, and films with the options that a save of
films has. H.264 has no peer in ffmpeg with the same encoder: it is measured against the same steps, one after
the other, on one thread.
"""

import json
import os
import pathlib
import re
import statistics
import struct
import subprocess
import sys
import tempfile

from processes import simulated_cameras, virtual_display

WIDTH, HEIGHT = 640, 480
NATIVE_BYTES = 1_000_000_000
SLOW_BYTES = 200_000_000
SLOW_RATE_MB_S = 20
IMAGES = 500
WINDOW_FRAMES = 2000
ROUNDS = 5
NATIVE_BOUND = 1.5
IMAGE_BOUND = 1.0
FILM_ROUNDS = 3
FILM_RAW, FILM_AV1, FILM_H264 = 1, 4, 6  # numbers of Util::Codec
FILM_QUALITY = 15
MEMORY_BOUND = 250_000_000
ANSWER_BOUND_S = 0.05
# An encoder for AV1 takes real-time priority from root, which an operator is not.
AS_OPERATOR = ["setpriv", "--bounding-set=-sys_nice"]


class NativeFile:
    """Where the frames of a native file lie."""

    def __init__(self, path):
        self.path = path
        with path.open("rb") as file:
            magic, _, at, size, self.data_offset = struct.unpack("<4sIQQQ", file.read(32))
            file.seek(at)
            description = json.loads(file.read(size))
        if magic != b"VESK" or description["acq"]["res"] != f"{WIDTH}x{HEIGHT}":
            sys.exit(f"{path} is no native file of {WIDTH}x{HEIGHT}")
        self.meta_size = description["meta"]["size"]
        self.frames = description["fr_cnt"]

    def write_mosaic(self, path):
        with self.path.open("rb") as file, path.open("wb") as mosaic:
            file.seek(self.data_offset)
            for _ in range(self.frames):
                file.read(self.meta_size)
                mosaic.write(file.read(WIDTH * HEIGHT))


class Saves:
    """The programs, each in an empty folder."""

    def __init__(self, build, environment, address, folder):
        self.program = f"{build}/bench/bench_save"
        self.environment, self.address, self.folder = environment, address, folder / "saved"

    def empty_folder(self):
        """What the last program saved loses its content at once, so that the disk never sees it, and its name later:
        the file system looks through all files that were deleted lately before it makes a new one, which would take
        a fifth of the processor time of 500 images."""
        if self.folder.exists():
            old = pathlib.Path(tempfile.mkdtemp(dir=self.folder.parent))
            for saved in self.folder.rename(old / "saved").iterdir():
                os.truncate(saved, 0)
        self.folder.mkdir()
        return self.folder

    def ours(self, what, source, frames, *more):
        folder = self.empty_folder()
        command = [*AS_OPERATOR, self.program, what, source, str(frames), folder, *map(str, more)]
        output = subprocess.run(command, env=self.environment, check=True, stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, timeout=600).stdout
        return json.loads(output)

    def curl(self, frames):
        """Seconds to fetch the frames into a file."""
        body = json.dumps({"type": 3, "src": 0, "take": 1, "start": 0, "cnt": frames})
        target = self.empty_folder() / "curl"
        command = ["curl", "--silent", "--fail", "--output", target, "--write-out", "%{time_total}",
                   "--header", "Content-Type: application/json", "--data", body, f"http://{self.address}/xfer"]
        output = subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, timeout=600).stdout
        return float(output), target.stat().st_size

    def ffmpeg(self, mosaic, *output):
        """Seconds to make what the output options say of a mosaic, without the start of the program."""
        *options, name = output
        command = [*AS_OPERATOR, "ffmpeg", "-nostdin", "-hide_banner", "-benchmark", "-f", "rawvideo",
                   "-framerate", "30", "-pixel_format", "bayer_rggb8", "-video_size", f"{WIDTH}x{HEIGHT}", "-i", mosaic,
                   *options, self.empty_folder() / name]
        said = subprocess.run(command, check=True, text=True, stderr=subprocess.PIPE, timeout=600).stderr
        return float(re.search(r"rtime=([\d.]+)s", said).group(1))

    def ffmpeg_images(self, mosaic):
        seconds = self.ffmpeg(mosaic, "-pix_fmt", "rgb24", "-compression_algo", "raw", "%04d.tiff")
        made = len(list(self.folder.iterdir()))
        if made != IMAGES:
            sys.exit(f"ffmpeg made {made} images")
        return seconds

    def check_film(self):
        """The film that is in the folder has all its frames."""
        command = ["ffprobe", "-v", "error", "-count_packets", "-show_entries", "stream=nb_read_packets,width,height",
                   "-of", "csv=p=0", *self.folder.iterdir()]
        told = subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, timeout=60).stdout.strip()
        if told != f"{WIDTH},{HEIGHT},{IMAGES}":
            sys.exit(f"a film is {told}")


def native_rows(saves, record):
    frames = -(-NATIVE_BYTES // record)
    ours, theirs = [], []
    for _ in range(ROUNDS):
        ours.append(saves.ours("native", saves.address, frames))
        saved = NativeFile(saves.folder / "ours.vesk")
        if saved.path.stat().st_size != saved.data_offset + frames * record:
            sys.exit("the native file is not whole")
        seconds, size = saves.curl(frames)
        if size != frames * record:
            sys.exit(f"curl fetched {size} bytes")
        theirs.append(seconds)
    seconds = statistics.median(one["seconds"] for one in ours)
    print(f"native save {NATIVE_BYTES / seconds / 1e6:.0f} MB/s, curl "
          f"{NATIVE_BYTES / statistics.median(theirs) / 1e6:.0f} MB/s", file=sys.stderr)
    yield {"what": "Native save of 1 GB against curl", "ratio": statistics.median(theirs) / seconds,
           "bound": NATIVE_BOUND, "sense": "at_least"}
    yield {"what": "Native save of 1 GB: memory against 250 MB",
           "ratio": max(one["peak_bytes"] for one in ours) / MEMORY_BOUND, "bound": 1.0, "sense": "at_most"}


def slow_row(saves, record):
    frames = SLOW_BYTES // record
    slow = saves.ours("slow", saves.address, frames, SLOW_RATE_MB_S)
    if slow["seconds"] < 0.9 * SLOW_BYTES / (SLOW_RATE_MB_S * 1e6):
        sys.exit(f"the slow save took only {slow['seconds']} s")
    return {"what": "Save to a disk of 20 MB/s: memory against 250 MB", "ratio": slow["peak_bytes"] / MEMORY_BOUND,
            "bound": 1.0, "sense": "at_most"}


def image_row(saves, native, mosaic):
    ours, theirs = [], []
    for _ in range(ROUNDS):
        ours.append(saves.ours("images", native.path, IMAGES)["seconds"])
        theirs.append(saves.ffmpeg_images(mosaic))
    ours, theirs = statistics.median(ours), statistics.median(theirs)
    print(f"image save {IMAGES / ours:.0f} frames/s, ffmpeg {IMAGES / theirs:.0f} frames/s", file=sys.stderr)
    return {"what": "Save of 500 colour images against ffmpeg", "ratio": theirs / ours, "bound": IMAGE_BOUND,
            "sense": "at_least"}


def film_row(saves, native, codec, rounds, what, bound, peer):
    ours, theirs = [], []
    for _ in range(rounds):
        ours.append(saves.ours("film", native.path, IMAGES, codec)["seconds"])
        saves.check_film()
        theirs.append(peer())
        saves.check_film()
    ours, theirs = statistics.median(ours), statistics.median(theirs)
    print(f"{what}: {IMAGES / ours:.0f} frames/s, peer {IMAGES / theirs:.0f} frames/s", file=sys.stderr)
    return {"what": what, "ratio": theirs / ours, "bound": bound, "sense": "at_least"}


def film_rows(saves, native, mosaic):
    yield film_row(saves, native, FILM_RAW, ROUNDS, "Film of 500 raw colour frames against ffmpeg", 1.0,
                   lambda: saves.ffmpeg(mosaic, "-c:v", "rawvideo", "-pix_fmt", "bgr24", "film.avi"))
    yield film_row(saves, native, FILM_AV1, FILM_ROUNDS, "Film of 500 colour frames in AV1 against ffmpeg", 0.95,
                   lambda: saves.ffmpeg(mosaic, "-c:v", "libsvtav1", "-preset", "5", "-crf", str(FILM_QUALITY),
                                        "-pix_fmt", "yuv420p", "film.mp4"))
    yield film_row(saves, native, FILM_H264, ROUNDS,
                   "Film of 500 colour frames in H.264 against one step after the other", 1.2,
                   lambda: saves.ours("plain", native.path, IMAGES, FILM_H264)["seconds"])


def window_row(saves, native):
    result = saves.ours("window", saves.address, WINDOW_FRAMES, native.path)
    print(f"longest time without an answer {result['stall_s'] * 1000:.0f} ms, at the beginning of a film "
          f"{result['film_s'] * 1000:.0f} ms", file=sys.stderr)
    return {"what": "Answer of the window during saves against 50 ms", "ratio": result["stall_s"] / ANSWER_BOUND_S,
            "bound": 1.0, "sense": "at_most"}


def camera(build, scene):
    take = json.dumps({"first": 0, "last": 9999, "scene": scene})
    return simulated_cameras(build, 1, "--pattern", "rggb", "--take", take)


def main():
    build = sys.argv[1]
    with tempfile.TemporaryDirectory(prefix="bench_save.") as name, virtual_display() as environment:
        folder = pathlib.Path(name)
        with camera(build, "moving") as addresses:
            saves = Saves(build, environment, addresses[0], folder)
            saves.ours("native", addresses[0], IMAGES)
        native = NativeFile((saves.folder / "ours.vesk").rename(folder / "source.vesk"))
        native.write_mosaic(folder / "mosaic")
        record = native.meta_size + WIDTH * HEIGHT
        # The camera draws this scene faster than anybody takes it.
        with camera(build, "plain"):
            rows = [*native_rows(saves, record), slow_row(saves, record),
                    image_row(saves, native, folder / "mosaic"), *film_rows(saves, native, folder / "mosaic"),
                    window_row(saves, native)]
    print(json.dumps(rows))


if __name__ == "__main__":
    main()
