#include "PictureDifference.h"

#include <QPainter>
#include <algorithm>
#include <cstdlib>
#include <ostream>

namespace veloria::tests {

namespace {

constexpr int channels = 4;

QImage premultiplied(const QImage& picture) {
  return picture.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
}

}  // namespace

PictureDifference differenceOf(const QImage& a, const QImage& b) {
  const QImage first = premultiplied(a);
  const QImage second = premultiplied(b);
  double sum = 0;
  double far = 0;
  for (int y = 0; y < first.height(); ++y) {
    const uchar* p = first.constScanLine(y);
    const uchar* q = second.constScanLine(y);
    for (int x = 0; x < first.width(); ++x) {
      int most = 0;
      for (int c = 0; c < channels; ++c, ++p, ++q) {
        const int step = std::abs(*p - *q);
        sum += step;
        most = std::max(most, step);
      }
      far += most > farStep ? 1 : 0;
    }
  }
  const double pixels = std::max(1.0, static_cast<double>(first.width()) * first.height());
  return {sum / (pixels * channels), far / pixels};
}

bool isSameLook(const PictureDifference& difference) {
  return difference.mean <= largestMean && difference.farShare <= largestFarShare;
}

QImage comparison(const QImage& expected, const QImage& actual) {
  constexpr int gap = 4;
  QImage apart = premultiplied(expected);
  const QImage other = premultiplied(actual);
  for (int y = 0; y < apart.height(); ++y) {
    uchar* p = apart.scanLine(y);
    const uchar* q = other.constScanLine(y);
    for (int i = 0; i < apart.width() * channels; ++i) {
      p[i] = i % channels == 3 ? 255 : static_cast<uchar>(std::min(255, 4 * std::abs(p[i] - q[i])));
    }
  }
  QImage all(expected.width(), 3 * expected.height() + 2 * gap, QImage::Format_RGB32);
  all.fill(Qt::black);
  QPainter painter(&all);
  int top = 0;
  for (const QImage& each : {expected, actual, apart}) {
    painter.drawImage(0, top, each);
    top += expected.height() + gap;
  }
  return all;
}

std::ostream& operator<<(std::ostream& out, const PictureDifference& difference) {
  return out << "mean difference " << difference.mean << " of 255 (at most " << largestMean << "), "
             << 100 * difference.farShare << " % of the pixels off by more than " << farStep << " (at most "
             << 100 * largestFarShare << " %)";
}

}  // namespace veloria::tests
