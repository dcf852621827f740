// Tone-mapping entries: peak selection, curve and tables, and the four
// threads that convert a frame slice by slice.
#include <pthread.h>

#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(__ANDROID__)
#include <android/log.h>
#else
#include <syslog.h>
#endif

#include "common/internal/fault.h"
#include "common/internal/api.h"
#include "imgp/hdr/hdr_internal.h"
#include "kimgp_hdr.h"

#include <cstddef>

// The work record's byte offsets, which the slice workers rely on.
static_assert(offsetof(kimgp_hdr_work, width) == 0, "work record");
static_assert(offsetof(kimgp_hdr_work, height) == 4, "work record");
static_assert(offsetof(kimgp_hdr_work, peak_scale) == 8, "work record");
static_assert(offsetof(kimgp_hdr_work, step) == 16, "work record");
static_assert(offsetof(kimgp_hdr_work, variant) == 20, "work record");
static_assert(offsetof(kimgp_hdr_work, hlg) == 24, "work record");
static_assert(offsetof(kimgp_hdr_work, s) == 32, "work record");
static_assert(offsetof(kimgp_hdr_work, k) == 40, "work record");
static_assert(offsetof(kimgp_hdr_work, sk) == 48, "work record");
static_assert(offsetof(kimgp_hdr_work, n) == 56, "work record");
static_assert(offsetof(kimgp_hdr_work, a) == 64, "work record");
static_assert(offsetof(kimgp_hdr_work, pq_lut) == 72, "work record");
static_assert(offsetof(kimgp_hdr_work, gain_lut) == 2120, "work record");
static_assert(offsetof(kimgp_hdr_work, hlg_lut) == 2634, "work record");
static_assert(offsetof(kimgp_hdr_work, out_lut) == 4682, "work record");
static_assert(offsetof(kimgp_hdr_work, reserved2) == 8778, "work record");
static_assert(sizeof(void*) == 4 ? offsetof(kimgp_hdr_work, src) == 8780 &&
                                       offsetof(kimgp_hdr_work, dst) == 8784 &&
                                       offsetof(kimgp_hdr_work, reserved3) == 8788 &&
                                       sizeof(kimgp_hdr_work) == 8792
                                 : offsetof(kimgp_hdr_work, src) == 8784 &&
                                       offsetof(kimgp_hdr_work, dst) == 8792 &&
                                       offsetof(kimgp_hdr_work, reserved3) == 8800 &&
                                       sizeof(kimgp_hdr_work) == 8808,
              "work record pointers");

namespace kelo {
namespace hdr {
namespace {

LogSink g_log_sink = nullptr;
void* g_log_ctx = nullptr;
uint32_t g_thread_fail = 0;

void* Allocate(size_t bytes) {
  void* p = HeapAlloc(bytes);
  if (p != nullptr) memset(p, 0, bytes);
  return p;
}

int CreateWorker(pthread_t* t, kimgp_hdr_thread_arg* arg, int index) {
  if ((g_thread_fail >> index) & 1u) return EAGAIN;
  return StartThread(t, thread_kimgp_hdr10_to_sdr8, arg);
}

// Curve parameters by peak; other peaks leave s = k = 0.
struct Curve {
  int32_t peak;
  double s, k;
};
constexpr Curve kCurves[] = {{1000, 2.0, 0.1}, {2000, 3.7, 0.07}, {4000, 7.5, 0.0375},
                             {4001, 10.0, 0.04}};

// Converts the slices of one thread: its first slice, then slices from the
// counter until none is left.
void RunSlices(kimgp_hdr_work* w, kimgp_hdr_slices* slices, int32_t first) {
  for (int32_t r = first; r >= 0; r = getStart(slices)) _kimgp_hdr10_to_sdr8(w, r, r + 4);
}

int32_t ToneMap(kimgp_img* src, kimgp_img* dst, int32_t variant, bool hlg) {
  // Everything the call needs first, so that a failure leaves no trace.
  auto* w = static_cast<kimgp_hdr_work*>(Allocate(sizeof(kimgp_hdr_work)));
  auto* slices = static_cast<kimgp_hdr_slices*>(Allocate(sizeof(kimgp_hdr_slices)));
  kimgp_hdr_thread_arg* args[3] = {};
  bool ok = w != nullptr && slices != nullptr;
  for (auto& a : args) {
    if (ok) a = static_cast<kimgp_hdr_thread_arg*>(Allocate(sizeof(kimgp_hdr_thread_arg)));
    ok = ok && a != nullptr;
  }
  if (ok && pthread_mutex_init(&slices->mutex, nullptr) != 0) ok = false;
  if (!ok) {
    for (auto* a : args) std::free(a);
    std::free(slices);
    std::free(w);
    return KIMGP_ERR_ARGS;
  }

  Log("source : %d, source_nit : %d\n", src->rsz_mode, src->peak_nits);
  int32_t peak;
  if (src->rsz_mode == 1) {
    peak = Analyze_SrcLuma(src->width[0], src->height[0],
                           reinterpret_cast<const uint16_t*>(src->plane[0]));
  } else {
    peak = src->peak_nits <= 1500 ? 1000 : 4000;
  }
  src->peak_nits = hlg ? peak : static_cast<int16_t>(peak);
  Log("final nit : %d\n", src->peak_nits);

  InitWork(w, src, dst, variant, hlg);
  BuildTables(w, peak);

  slices->next = 16;
  slices->limit = w->height;
  pthread_t threads[3];
  bool started[3];
  for (int i = 0; i < 3; ++i) {
    *args[i] = kimgp_hdr_thread_arg{w, slices, 4 * (i + 1)};
    started[i] = CreateWorker(&threads[i], args[i], i) == 0;
  }
  _kimgp_hdr10_to_sdr8(w, 0, 4);
  // A worker that did not start leaves its first slice to this thread.
  for (int i = 0; i < 3; ++i) {
    if (!started[i]) _kimgp_hdr10_to_sdr8(w, args[i]->first_row, args[i]->first_row + 4);
  }
  RunSlices(w, slices, getStart(slices));
  for (int i = 0; i < 3; ++i) {
    if (started[i]) pthread_join(threads[i], nullptr);
    std::free(args[i]);
  }
  pthread_mutex_destroy(&slices->mutex);
  std::free(slices);
  std::free(w);
  return KIMGP_OK;
}

}  // namespace

void Log(const char* fmt, ...) {
  char line[256];
  va_list ap;
  va_start(ap, fmt);
  std::vsnprintf(line, sizeof line, fmt, ap);
  va_end(ap);
  if (g_log_sink != nullptr) {
    g_log_sink(g_log_ctx, "KIMGP_HDR", line);
    return;
  }
#if defined(__ANDROID__)
  __android_log_print(ANDROID_LOG_INFO, "KIMGP_HDR", "%s", line);
#else
  syslog(LOG_INFO, "%s: %s", "KIMGP_HDR", line);
#endif
}

void SetLogSinkForTest(LogSink sink, void* ctx) {
  g_log_sink = sink;
  g_log_ctx = ctx;
}
void SetThreadFailureForTest(uint32_t mask) { g_thread_fail = mask; }

void InitWork(kimgp_hdr_work* w, const kimgp_img* src, kimgp_img* dst, int32_t variant, bool hlg) {
  w->width = src->width[0];
  w->height = src->height[0];
  w->step = w->width % 32 == 0 ? 32 : (w->width % 16 == 0 ? 16 : 8);
  w->variant = variant;
  w->hlg = hlg ? 1 : 0;
  w->src = src;
  w->dst = dst;
}

namespace {

// Transfer: PQ code to linear light, 32767 = the peak.
void FillPq(double peak_scale, uint16_t* lut) {
  for (int i = 0; i < 1024; ++i) {
    const double p = std::pow(i / 1023.0, 1.0 / m2);
    const double d = p - c1 > 0.0 ? p - c1 : 0.0;
    const double l = std::pow(d / (c2 - c3 * p), 1.0 / m1);
    const double v = l * peak_scale < 1.0 ? l * peak_scale : 1.0;
    lut[i] = static_cast<uint16_t>(std::trunc(0.5 + v * 32767));
  }
}

// Gain by 8-bit linear level.
void FillGain(const kimgp_hdr_work& w, uint16_t* lut) {
  lut[0] = 0;
  for (int j = 1; j < 256; ++j) {
    const float x = static_cast<float>(j) / 255.0f;
    const double g = TMO_VD_Norm(x, w.s, w.k, w.n, w.a) / x;
    lut[j] = static_cast<uint16_t>(std::trunc(0.5 + g * 256));
  }
  lut[256] = lut[255];
}

// The tables that depend only on the peak, or on nothing, are the same for
// every frame: each is computed once and copied into the frame's record.
// Peaks come from a handful of values; a few slots hold the latest ones.
struct PeakTables {
  bool filled;
  int32_t peak;
  uint16_t pq[1024];
  uint16_t gain[257];
};
constexpr int kPeakSlots = 4;
pthread_mutex_t g_tables_mutex = PTHREAD_MUTEX_INITIALIZER;
PeakTables g_peak_tables[kPeakSlots];
int g_next_slot = 0;

struct FixedTables {
  uint16_t hlg[1024];
  uint8_t out[4096];
};

const FixedTables& Fixed() {
  static const FixedTables t = [] {
    FixedTables f;
    // HLG code to linear light.
    for (int i = 0; i < 1024; ++i) {
      f.hlg[i] = static_cast<uint16_t>(std::trunc(0.5 + std::pow(i / 1023.0, 2.4) * 32767));
    }
    // 12-bit linear level to 8-bit limited-range code (gamma 1/2.2 kept in
    // single precision).
    const double gamma = static_cast<double>(0.45454543828964233f);
    for (int j = 0; j < 4096; ++j) {
      const float base = static_cast<float>(j) / 4095.0f;
      double v = std::pow(static_cast<double>(base), gamma);
      v = v < 1.0 ? v : 1.0;
      const int32_t q = static_cast<int32_t>(std::trunc(0.5 + v * 4095)) >> 4;
      const float code = 16.0f + static_cast<float>(q) * 0.85882354f;
      f.out[j] = static_cast<uint8_t>(static_cast<int32_t>(code));
    }
    return f;
  }();
  return t;
}

// Copies the transfer (PQ) and gain tables of w's peak into w, computing them
// on the first frame of that peak.
void CopyPeakTables(kimgp_hdr_work* w, int32_t peak) {
  pthread_mutex_lock(&g_tables_mutex);
  PeakTables* t = nullptr;
  for (PeakTables& slot : g_peak_tables) {
    if (slot.filled && slot.peak == peak) t = &slot;
  }
  if (t == nullptr) {
    t = &g_peak_tables[g_next_slot];
    g_next_slot = (g_next_slot + 1) % kPeakSlots;
    FillPq(w->peak_scale, t->pq);
    FillGain(*w, t->gain);
    t->peak = peak;
    t->filled = true;
  }
  if (w->hlg != 1) std::memcpy(w->pq_lut, t->pq, sizeof t->pq);
  std::memcpy(w->gain_lut, t->gain, sizeof t->gain);
  pthread_mutex_unlock(&g_tables_mutex);
}

}  // namespace

void BuildTables(kimgp_hdr_work* w, int32_t peak) {
  w->peak_scale = 10000.0 / peak;
  double s = 0.0, k = 0.0;
  for (const Curve& c : kCurves) {
    if (c.peak == peak) {
      s = c.s;
      k = c.k;
    }
  }
  w->s = s;
  w->k = k;
  w->sk = s * k;
  if (k > 0.0) {
    w->n = static_cast<int32_t>(std::trunc(std::log(1.0 - w->sk) / std::log(1.0 - k) + 0.5));
    w->a = (w->sk - k) / (1.0 - std::pow(1.0 - k, w->n) - k);
  } else {
    w->n = 0;
    w->a = 0.0;
  }
  // Everything the transfer and gain tables depend on follows from the peak.
  CopyPeakTables(w, peak);
  const FixedTables& f = Fixed();
  if (w->hlg == 1) std::memcpy(w->hlg_lut, f.hlg, sizeof f.hlg);
  std::memcpy(w->out_lut, f.out, sizeof f.out);
}

}  // namespace hdr
}  // namespace kelo

using kelo::hdr::Log;

KELO_EXPORT int32_t Analyze_SrcLuma(int32_t width, int32_t height, const uint16_t* luma) {
  int32_t max_y = 0;
  if (height > 0) {
    const int32_t step = width > 2000 ? 4 : 2;
    const auto* bytes = reinterpret_cast<const uint8_t*>(luma);
    for (int32_t r = 0; r < height; r += step) {
      const uint8_t* row = bytes + 2 * static_cast<ptrdiff_t>(r) * width;
      for (int32_t c = 0; c < width; c += step) {
        uint16_t v;
        std::memcpy(&v, row + 2 * static_cast<ptrdiff_t>(c), 2);
        if (v > max_y) max_y = v;
      }
    }
  }
  Log("maxY = %d, \n", max_y);
  return max_y >= 811 ? 4001 : (max_y > 750 ? 2000 : 1000);
}

KELO_EXPORT double TMO_VD_Norm(double x, double s, double k, int32_t n, double a) {
  if (x <= k) return s * x;
  return a * (1.0 - std::pow(1.0 - x, n)) + (1.0 - a) * x;
}

KELO_EXPORT int32_t getStart(kimgp_hdr_slices* slices) {
  pthread_mutex_lock(&slices->mutex);
  int32_t row = -1;
  if (slices->next < slices->limit) {
    row = slices->next;
    slices->next += 4;
  }
  pthread_mutex_unlock(&slices->mutex);
  return row;
}

KELO_EXPORT void* thread_kimgp_hdr10_to_sdr8(void* arg) {
  auto* a = static_cast<kimgp_hdr_thread_arg*>(arg);
  kelo::hdr::RunSlices(a->work, a->slices, a->first_row);
  pthread_exit(nullptr);
}

KELO_EXPORT int32_t kimgp_hdr10_to_sdr8(kimgp_img* src, kimgp_img* dst, int32_t variant) {
  return kelo::hdr::ToneMap(src, dst, variant, false);
}

KELO_EXPORT int32_t kimgp_hlg_to_sdr8(kimgp_img* src, kimgp_img* dst) {
  return kelo::hdr::ToneMap(src, dst, 0, true);
}

KELO_EXPORT int32_t kimgp_hdr_to_sdr(kimgp_img* src, kimgp_img* dst, int32_t mode) {
  switch (mode) {
    case KIMGP_HDR_MODE_HDR10:
      return kimgp_hdr10_to_sdr8(src, dst, 0);
    case KIMGP_HDR_MODE_HDR10B:
      return kimgp_hdr10_to_sdr8(src, dst, 1);
    case KIMGP_HDR_MODE_HLG:
      return kimgp_hlg_to_sdr8(src, dst);
    default:
      return KIMGP_ERR_ARGS;
  }
}
