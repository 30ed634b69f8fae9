#!/bin/sh
# ffmpeg.sh PREFIX
# Inside the build environment: makes the FFmpeg libraries that the program is built with, from Debian's own
# source package, and puts them into PREFIX, all or nothing. Debian's libraries have no encoder openh264.
set -eu
prefix=$1
work=$prefix.work
rm -rf --one-file-system -- "$work"
mkdir -p -- "$work"
trap 'rm -rf --one-file-system -- "$work"' EXIT
cd "$work"

# The mirrors that the system has its packages from, asked for sources, in lists of its own: the system's
# stay as they are.
# shellcheck disable=SC2016 # these are apt's own variables
apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
    awk '$3 == "main" { print "deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg]", $1, $2, $3 }' |
    sort -u >sources.list
[ -s sources.list ] || { echo "the system knows no mirror of Debian's sources" >&2; exit 1; }
mkdir -p lists/partial cache/archives/partial source
apt() {
    apt-get -q -o Dir::Etc::SourceList="$work/sources.list" -o Dir::Etc::SourceParts=/dev/null \
        -o Dir::State::Lists="$work/lists" -o Dir::Cache="$work/cache" -o APT::Sandbox::User=root "$@"
}
apt update
cd source
apt --only-source source ffmpeg
cd ffmpeg-*/

./configure --prefix="$prefix" --enable-rpath --disable-everything --disable-programs --disable-doc \
    --disable-autodetect --disable-network --enable-shared --disable-static \
    --disable-avdevice --disable-avfilter --disable-swresample --disable-postproc \
    --enable-libopenh264 --enable-libsvtav1 --enable-encoder=libopenh264,libsvtav1,rawvideo \
    --enable-decoder=h264,av1,rawvideo --enable-muxer=avi,mp4 --enable-demuxer=avi,mov --enable-protocol=file
make -j "$(nproc)"
make install DESTDIR="$work/installed"
rm -rf --one-file-system -- "$prefix"
mv -T -- "$work/installed$prefix" "$prefix"
