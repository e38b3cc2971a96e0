#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "gpu/Frame.h"
#include "gpu/cpu/CpuSurface.h"
#include "gpu/cpu/CpuTexture.h"
#include "gpu/cpu/ThreadPool.h"

namespace veloria::gpu::cpu {

/// A pass with everything that it needs.
struct RecordedPass {
  const Function* function = nullptr;
  std::array<std::shared_ptr<CpuStorage>, maxTextures> textures;
  std::array<std::shared_ptr<CpuStorage>, maxImages> images;
  std::shared_ptr<CpuStorage> target;
  std::size_t bytesAt = 0;  ///< in the frame's bytes
  std::size_t byteCount = 0;
  std::uint32_t targetKind = 0;
  std::uint32_t variant = 0;
};

/// Runs frames one after the other on a thread of its own, which shares each pass's rows with a pool.
class CpuWorker;

class CpuFrame final : public Frame {
 public:
  explicit CpuFrame(CpuWorker& worker) : worker_(worker) {}

  /// On the thread that draws: waits until the worker is through with it.
  void reopen(bool profiles);
  /// On the worker's thread.
  void execute(ThreadPool& pool) noexcept;

 private:
  friend class CpuWorker;

  void doRun(const Pass& pass) override;
  void doPresent(Drawable& drawable) override;
  void doCommit(CompletedHandler handler) override;

  /// How many of the passes from `first` on are steps of one iteration that can go down the rows as a wave.
  std::size_t waveLength(std::size_t first) const;
  void prepare(const RecordedPass& pass, Call& call) const;
  void runWave(std::size_t first, std::size_t count);
  void runRows(const RecordedPass& pass, ThreadPool& pool);
  void addTime(const char* name, double seconds);

  CpuWorker& worker_;
  std::vector<RecordedPass> passes_;
  std::size_t passCount_ = 0;  ///< the rest keeps its memory for later
  std::vector<std::byte> bytes_;
  CpuDrawable* drawable_ = nullptr;
  CompletedHandler handler_;
  bool profiles_ = false;
  std::vector<PassTime> times_;
  bool running_ = false;  // under the worker's mutex
};

class CpuWorker {
 public:
  explicit CpuWorker(unsigned threads);
  ~CpuWorker();
  CpuWorker(const CpuWorker&) = delete;
  CpuWorker& operator=(const CpuWorker&) = delete;

  unsigned threads() const { return pool_.threads(); }
  void add(CpuFrame& frame);
  void waitFor(const CpuFrame& frame);
  void waitIdle();

 private:
  void work();

  ThreadPool pool_;
  std::mutex mutex_;
  std::condition_variable added_;
  std::condition_variable finished_;
  std::vector<CpuFrame*> frames_;  ///< the first is running
  bool ending_ = false;
  std::thread thread_;
};

class CpuFrameQueue final : public FrameQueue {
 public:
  CpuFrameQueue(Device& device, CpuWorker& worker);
  ~CpuFrameQueue() override;
  void setProfiling(bool on) override { profiles_ = on; }

 private:
  Frame* doBegin(const char* label) override;

  static constexpr std::size_t framesInFlight = 3;

  CpuWorker& worker_;
  std::array<CpuFrame, framesInFlight> frames_;
  std::size_t next_ = 0;
  bool profiles_ = false;
};

}  // namespace veloria::gpu::cpu
