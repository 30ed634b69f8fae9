#pragma once

#include "camera/vesk_value.h"

/**
 * What is told about a recording, in order of creation: ROW(property, JSON path, alternative path, type).
 * HIDDEN rows have no property, they only travel with the recording. SUBCLASS(property) stands where the
 * property has its place and is made by the subclass, which knows whether it can be written.
 *
 * The alternative paths are those of older firmware and of files that were saved from it.
 */
// clang-format off
#define VESK_PLAYBACK_VALUES(ROW, HIDDEN, SUBCLASS) \
    ROW(firstFr,         "first_fr",           "", QMetaType::Int) \
    ROW(lastFr,          "last_fr",            "", QMetaType::Int) \
    ROW(frCnt,           "fr_cnt",             "", QMetaType::Int) \
    ROW(ptFrCnt,         "pt_fr_cnt",          "", QMetaType::Int) \
    ROW(res,             "acq/res",            "", QMetaType::QString) \
    ROW(bpp,             "acq/bpp",            "", QMetaType::Int) \
    HIDDEN(clkFreq,      "acq/clk_freq",       "", QMetaType::Int) \
    ROW(expClks,         "acq/exp_clks",       "", QMetaType::Int) \
    ROW(expTime,         "acq/exp_time",       "", QMetaType::Double) \
    ROW(frClks,          "acq/fr_clks",        "", QMetaType::Int) \
    ROW(frRate,          "acq/fr_rate",        "", QMetaType::Double) \
    ROW(fsyncMode,       "acq/fsync_mode",     "", QMetaType::Int) \
    ROW(fsyncState,      "acq/fsync_state",    "", QMetaType::Int) \
    SUBCLASS(corrMode) \
    ROW(cameraName,      "camera/name",        "", QMetaType::QString) \
    ROW(cameraSerial,    "camera/serial",      "", QMetaType::QString) \
    ROW(cameraModel,     "camera/model",       "", QMetaType::QString) \
    ROW(cfa,             "camera/cfa",         "", QMetaType::Int) \
    ROW(fwVer,           "camera/fw_ver",      "", QMetaType::QString) \
    ROW(metaSize,        "meta/size",          "meta_size", QMetaType::Int) \
    ROW(yearOffset,      "meta/year_offset",   "time/year_offset", QMetaType::Int) \
    ROW(lensMount,       "lens/mount",         "", QMetaType::QString) \
    ROW(lensId,          "lens/id",            "", QMetaType::Int) \
    ROW(lensName,        "lens/name",          "", QMetaType::QString) \
    ROW(lensAFSwitch,    "lens/af_switch",     "", QMetaType::Int) \
    ROW(lensFocalLenMin, "lens/focal_len_min", "", QMetaType::Int) \
    ROW(lensFocalLenMax, "lens/focal_len_max", "", QMetaType::Int) \
    ROW(lensFocalLen,    "lens/focal_len",     "", QMetaType::Int) \
    ROW(lensFstopMin,    "lens/fstop_min",     "", QMetaType::Double) \
    ROW(lensFstopMax,    "lens/fstop_max",     "", QMetaType::Double) \
    ROW(lensFstop,       "lens/fstop",         "", QMetaType::Double) \
    ROW(lensFocusDist,   "lens/focus_dist",    "", QMetaType::Double)
// clang-format on
