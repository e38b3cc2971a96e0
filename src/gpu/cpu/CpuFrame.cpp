#include "gpu/cpu/CpuFrame.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

#include "gpu/cpu/CpuPipeline.h"

namespace veloria::gpu::cpu {

namespace {

/// Below this many texels the thread that begins a pass has done it before another one wakes up. Fragment functions do
/// more for each.
constexpr int smallPass = 20000;
constexpr int smallDrawing = 2000;
constexpr unsigned portionsPerThread = 3;

double secondsNow() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

const std::shared_ptr<CpuStorage>& storageOf(const Texture& texture) {
  return static_cast<const CpuTexture&>(texture).storage();
}

}  // namespace

void CpuFrame::reopen(bool profiles) {
  worker_.waitFor(*this);
  passCount_ = 0;
  bytes_.clear();
  drawable_ = nullptr;
  profiles_ = profiles;
}

void CpuFrame::doRun(const Pass& pass) {
  if (passCount_ == passes_.size()) passes_.emplace_back();
  RecordedPass& recorded = passes_[passCount_++];
  recorded.function = &static_cast<const CpuPipeline&>(pass.pipeline).function();
  for (std::size_t index = 0; index < maxTextures; ++index) {
    recorded.textures[index] = pass.textures[index] != nullptr ? storageOf(*pass.textures[index]) : nullptr;
  }
  for (std::size_t index = 0; index < maxImages; ++index) {
    recorded.images[index] = pass.images[index] != nullptr ? storageOf(*pass.images[index]) : nullptr;
  }
  recorded.target = storageOf(pass.target);
  recorded.bytesAt = bytes_.size();
  recorded.byteCount = pass.bytes.size();
  bytes_.insert(bytes_.end(), pass.bytes.begin(), pass.bytes.end());
  recorded.targetKind = static_cast<std::uint32_t>(targetKind(pass.target.format()));
  recorded.variant = pass.pipeline.descriptor().variant;
}

void CpuFrame::doPresent(Drawable& drawable) {
  drawable_ = static_cast<CpuDrawable*>(&drawable);
}

void CpuFrame::doCommit(CompletedHandler handler) {
  handler_ = std::move(handler);
  if (drawable_ != nullptr) drawable_->committed();
  worker_.add(*this);
}

std::size_t CpuFrame::waveLength(std::size_t first) const {
  const RecordedPass& begin = passes_[first];
  if (begin.function->reach < 0) return 1;
  std::size_t end = first + 1;
  for (; end < passCount_; ++end) {
    const RecordedPass& before = passes_[end - 1];
    const RecordedPass& now = passes_[end];
    const bool goesOn = now.function == begin.function && now.images[0] == before.target &&
                        now.target == before.images[0] && now.images[1] == before.images[1] &&
                        now.images[2] == before.images[2] && now.byteCount == 0;
    if (!goesOn) break;
  }
  return end - first;
}

void CpuFrame::prepare(const RecordedPass& pass, Call& call) const {
  for (std::size_t index = 0; index < maxTextures; ++index) {
    if (pass.textures[index] != nullptr) call.textures[index] = pass.textures[index]->source();
  }
  for (std::size_t index = 0; index < maxImages; ++index) {
    if (pass.images[index] != nullptr) call.images[index] = pass.images[index]->source();
  }
  call.target = pass.target->target();
  call.bytes = bytes_.data() + pass.bytesAt;
  call.targetKind = pass.targetKind;
  call.variant = pass.variant;
}

// A step may do a row as soon as the one before it has done the rows within its reach below. Then the step before reads
// that row of its own input, which is this one's target, no more.
void CpuFrame::runWave(std::size_t first, std::size_t count) {
  const Function& function = *passes_[first].function;
  std::array<Call, 2> calls;
  for (std::size_t index = 0; index < 2; ++index) prepare(passes_[first + index], calls[index]);
  const int height = calls[0].target.height;
  const int steps = static_cast<int>(count);
  for (int wave = 0; wave < height + (steps - 1) * function.reach; ++wave) {
    for (int step = 0; step < steps; ++step) {
      const int row = wave - step * function.reach;
      if (row < 0) break;
      if (row < height) function.rows(calls[static_cast<std::size_t>(step) % 2], row, row + 1);
    }
  }
}

void CpuFrame::runRows(const RecordedPass& pass, ThreadPool& pool) {
  Call call;
  prepare(pass, call);
  const int height = call.target.height;
  const bool small = call.target.width * height < (pass.function->draws ? smallDrawing : smallPass);
  const auto portions = small ? 1U : std::min(static_cast<unsigned>(height), pool.threads() * portionsPerThread);
  const auto edge = [&](unsigned portion) {
    return static_cast<int>(static_cast<unsigned>(height) * portion / portions);
  };
  pool.run(portions, [&](unsigned portion) { pass.function->rows(call, edge(portion), edge(portion + 1)); });
}

void CpuFrame::addTime(const char* name, double seconds) {
  const auto same = std::find_if(times_.begin(), times_.end(),
                                 [&](const PassTime& time) { return std::strcmp(time.name, name) == 0; });
  if (same != times_.end()) {
    same->seconds += seconds;
  } else {
    times_.push_back({name, seconds});
  }
}

void CpuFrame::execute(ThreadPool& pool) noexcept {
  Completion completion;
  completion.gpuStart = secondsNow();
  times_.clear();
  for (std::size_t index = 0; index < passCount_;) {
    const double start = profiles_ ? secondsNow() : 0;
    const std::size_t count = waveLength(index);
    if (count > 1) {
      runWave(index, count);
    } else {
      runRows(passes_[index], pool);
    }
    if (profiles_) addTime(passes_[index].function->name, secondsNow() - start);
    index += count;
  }
  if (drawable_ != nullptr) drawable_->show();
  // Lets go of what only this frame still needs.
  for (std::size_t index = 0; index < passCount_; ++index) passes_[index] = {};
  completion.gpuEnd = secondsNow();
  completion.passes = times_;
  if (handler_) handler_(completion);
  handler_ = nullptr;
}

CpuWorker::CpuWorker(unsigned threads) : pool_(threads), thread_([this] { work(); }) {}

CpuWorker::~CpuWorker() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  added_.notify_one();
  thread_.join();
}

void CpuWorker::add(CpuFrame& frame) {
  {
    const std::lock_guard lock(mutex_);
    frame.running_ = true;
    frames_.push_back(&frame);
  }
  added_.notify_one();
}

void CpuWorker::waitFor(const CpuFrame& frame) {
  std::unique_lock lock(mutex_);
  finished_.wait(lock, [&] { return !frame.running_; });
}

void CpuWorker::waitIdle() {
  std::unique_lock lock(mutex_);
  finished_.wait(lock, [&] { return frames_.empty(); });
}

void CpuWorker::work() {
  lowerPriority();
  std::unique_lock lock(mutex_);
  for (;;) {
    added_.wait(lock, [&] { return ending_ || !frames_.empty(); });
    if (frames_.empty()) return;
    CpuFrame& frame = *frames_.front();
    lock.unlock();
    frame.execute(pool_);
    lock.lock();
    frames_.erase(frames_.begin());
    frame.running_ = false;
    finished_.notify_all();
  }
}

CpuFrameQueue::CpuFrameQueue(Device& device, CpuWorker& worker)
    : FrameQueue(device), worker_(worker), frames_{CpuFrame(worker), CpuFrame(worker), CpuFrame(worker)} {}

CpuFrameQueue::~CpuFrameQueue() {
  worker_.waitIdle();
}

Frame* CpuFrameQueue::doBegin(const char*) {
  CpuFrame& frame = frames_[next_];
  next_ = (next_ + 1) % framesInFlight;
  frame.reopen(profiles_);
  return &frame;
}

}  // namespace veloria::gpu::cpu
