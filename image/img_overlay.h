#pragma once

namespace cv
{
class Mat;
}

/** The two overlays on a working image (CV_16UC3; blue, green, red). */
namespace ImgOverlay
{
/** Pure red where the gray value is at its maximum, pure blue where it is 0. */
void exposureAssist(cv::Mat &image);
/** Pure green on sharp edges; level is an ImgAdjModel::FocusPeak above 0. */
void focusPeaking(cv::Mat &image, int level);
} // namespace ImgOverlay
