#include "image/img_overlay.h"

#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include <vector>

namespace
{
/**
 * The working image is blue, green, red, so that this code gives blue the weight of red. Exposure and focus
 * marks have always been placed on this gray, and users know them as they are.
 */
cv::Mat overlayGray(const cv::Mat &image)
{
    cv::Mat gray;
    cv::cvtColor(image, gray, cv::COLOR_RGB2GRAY);
    return gray;
}

/** Replaces the pixels under mask (16-bit, all bits or none) by those of the overlay. */
void drawOverlay(cv::Mat &image, const cv::Mat &mask, const std::vector<cv::Mat> &overlayPlanes)
{
    cv::Mat overlay;
    cv::merge(overlayPlanes, overlay);
    cv::Mat keep;
    cv::bitwise_not(mask, keep);
    cv::cvtColor(keep, keep, cv::COLOR_GRAY2BGR);
    cv::Mat kept;
    cv::bitwise_and(image, keep, kept);
    cv::bitwise_or(kept, overlay, image);
}

double edgeThreshold(int level)
{
    switch (level) {
    case 2:
        return 100.0;
    case 3:
        return 50.0;
    default:
        return 150.0;
    }
}

/** 255 where the gray image has an edge above the threshold, without single isolated pixels. */
cv::Mat edgeMask(const cv::Mat &gray, double threshold)
{
    // A fresh object for each frame: it keeps scratch images and frames are adjusted on several threads.
    cv::Mat work;
    cv::createCLAHE(2.0, cv::Size(8, 8))->apply(gray, work);
    cv::GaussianBlur(work, work, cv::Size(3, 3), 0.0, 0.0, cv::BORDER_DEFAULT);
    cv::Mat edges;
    cv::Laplacian(work, edges, CV_32F, 3, 1.0, 0.0, cv::BORDER_DEFAULT);
    cv::Mat mask;
    cv::convertScaleAbs(edges, mask, 0.0038910505836575876, 0.0);
    cv::threshold(mask, mask, threshold, 255.0, cv::THRESH_BINARY);
    cv::filterSpeckles(mask, 0.0, 1, 1.0);
    return mask;
}
} // namespace

void ImgOverlay::exposureAssist(cv::Mat &image)
{
    const cv::Mat gray = overlayGray(image);
    cv::Mat over;
    cv::threshold(gray, over, 65534.0, 65535.0, cv::THRESH_BINARY);
    cv::Mat under;
    cv::threshold(gray, under, 0.0, 65535.0, cv::THRESH_BINARY_INV);
    cv::Mat marked;
    cv::bitwise_or(under, over, marked);
    const cv::Mat zeros = cv::Mat::zeros(image.size(), CV_16U);
    drawOverlay(image, marked, {under, zeros, over});
}

void ImgOverlay::focusPeaking(cv::Mat &image, int level)
{
    const cv::Mat mask = edgeMask(overlayGray(image), edgeThreshold(level));
    cv::Mat mask16;
    mask.convertTo(mask16, CV_16U, 257.0, 0.0);
    const cv::Mat zeros = cv::Mat::zeros(image.size(), CV_16U);
    drawOverlay(image, mask16, {zeros, mask16, zeros});
}
