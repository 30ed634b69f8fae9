# FFmpeg with the encoders that films are made with. A private one comes before the system's, which may lack
# an encoder: saves that need it then tell so, and all others work.
if(DEFINED ENV{VESK_FFMPEG})
  set(vesk_ffmpeg_default "$ENV{VESK_FFMPEG}")
else()
  set(vesk_ffmpeg_default /opt/vesk-ffmpeg)
endif()
set(VESK_FFMPEG "${vesk_ffmpeg_default}" CACHE PATH "Folder of an FFmpeg that comes before the system's")

find_package(PkgConfig REQUIRED)
set(ENV{PKG_CONFIG_PATH} "${VESK_FFMPEG}/lib/pkgconfig:$ENV{PKG_CONFIG_PATH}")
pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET
  libavformat>=61.7 libavcodec>=61.19 libavutil>=59.39 libswscale>=8.3)
