#pragma once

struct AVCodec;
struct AVCodecContext;
struct AVDictionary;

/** How much less than the window's threads those count that write files, on the scale of setpriority(2). */
inline constexpr int WriterNiceness = 5;
/** The same for those of an encoder. */
inline constexpr int EncoderNiceness = 10;

/** The calling thread, and those that it begins, give way to the window and to the camera's network traffic:
 * their niceness is the writers' or, in a program that was started with a higher one, stays. */
void giveWay();

/**
 * Opens an encoder, whose threads give way from then on. That for AV1 gives its threads, and the one that
 * opens it, real-time priority where the user may have it, so that nothing else runs beside it: it is opened
 * on a thread of its own, by avcodec_open2, and the priority is taken back.
 *
 * Returns the code of avcodec_open2, or AVERROR(EAGAIN) where the system has no thread left.
 */
int openInBackground(AVCodecContext *context, const AVCodec *codec, AVDictionary **options);
