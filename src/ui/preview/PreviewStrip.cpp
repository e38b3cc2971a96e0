#include "ui/preview/PreviewStrip.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <utility>

#include "ui/controls/Swatch.h"

namespace veloria {

namespace {

constexpr int settlingMs = 200;

}  // namespace

QSize previewPixels(QSize points, double ratio) {
  const double width = points.width() * ratio;
  const double height = points.height() * ratio;
  if (!(width >= 1) || !(height >= 1)) return {};
  const QSize most = PreviewStrip::maximumPixels;
  const double scale = std::min({1.0, most.width() / width, most.height() / height});
  return {std::max(1, static_cast<int>(std::lround(width * scale))),
          std::max(1, static_cast<int>(std::lround(height * scale)))};
}

PreviewStrip::PreviewStrip(PreviewPainter& painter, std::function<NimbraConfig()> config, QWidget* parent)
    : QWidget(parent),
      painter_(painter),
      config_(std::move(config)),
      watch_(this, [this](bool seen) { setRunning(seen); }) {
  setFixedHeight(heightPoints);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setAccessibleName(tr("Preview"));
  timer_.setInterval(intervalMs);
  connect(&timer_, &QTimer::timeout, this, &PreviewStrip::ask);
  settling_.setSingleShot(true);
  settling_.setInterval(settlingMs);
  connect(&settling_, &QTimer::timeout, this, [this] { pixels_ = wantedPixels(); });
  connect(&painter_, &PreviewPainter::frameDrawn, this, &PreviewStrip::showPicture);
  connect(&painter_, &PreviewPainter::failed, this, &PreviewStrip::showFailure);
}

PreviewStrip::~PreviewStrip() {
  if (timer_.isActive()) painter_.stopFrames();
}

void PreviewStrip::setRunning(bool on) {
  if (!on) {
    timer_.stop();
    return painter_.stopFrames();
  }
  pixels_ = wantedPixels();
  ask();
  timer_.start();
}

QSize PreviewStrip::wantedPixels() const {
  return previewPixels(size(), devicePixelRatioF());
}

void PreviewStrip::ask() {
  if (pixels_ != wantedPixels() && !settling_.isActive()) settling_.start();  // another screen's ratio
  if (pixels_.isEmpty()) return;
  painter_.drawFrame(config_(), pixels_, static_cast<double>(pixels_.height()) / heightPoints);
}

void PreviewStrip::showPicture(const QImage& picture) {
  if (!timer_.isActive()) return;
  picture_ = picture;
  setFailure({}, {});
}

void PreviewStrip::showFailure(const QString& reason) {
  picture_ = {};
  setFailure(tr("No preview: the GPU is not available."), reason);
}

void PreviewStrip::setFailure(const QString& sentence, const QString& reason) {
  if (sentence != failure_) {
    failure_ = sentence;
    setToolTip(reason);
    setAccessibleDescription((sentence + QLatin1Char(' ') + reason).trimmed());
  }
  update();
}

void PreviewStrip::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (pixels_.isEmpty()) {
    pixels_ = wantedPixels();
  } else {
    settling_.start();
  }
}

void PreviewStrip::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
  QPainterPath frame;
  frame.addRoundedRect(rect(), swatchRadius, swatchRadius);
  painter.setClipPath(frame);
  painter.fillRect(rect(), nightColor);
  if (!picture_.isNull()) painter.drawImage(rect(), picture_);
  if (failure_.isEmpty()) return;
  painter.setPen(Qt::white);
  painter.drawText(rect().adjusted(8, 2, -8, -2), Qt::AlignCenter | Qt::TextWordWrap, failure_);
}

}  // namespace veloria
