// Drives the bit reader and writer with operations decoded from the input and
// checks every result and every record field against a reference model.
//
// The model keeps the reader's cache as 32 bit cells, cell 0 holding the next
// bit in either bit order, and byte positions as indices; counts are 64-bit
// integers and shift amounts are reduced modulo 256 arithmetically. The writer
// model writes one bit at a time. Nothing is shared with the library's code.
//
// Input: reader data size, the data, writer size, the writer's initial bytes,
// then operations until the input ends. The reader's buffer is allocated with
// its exact size so that AddressSanitizer reports any read outside it; the
// writer's buffer has kSlack bytes after it, the most a single write may
// legitimately reach is 5 of them (a 40-bit write), and the model checks every
// byte of the slack after every operation.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "kcmn_bitstream.h"

namespace {

constexpr uint32_t kFail = 0xFFFFFFFFu;
constexpr size_t kSlack = 8;
constexpr int kMaxOps = 4096;

[[noreturn]] void Fail(int op, const char* what, int64_t got, int64_t want) {
  fprintf(stderr,
          "bitstream_fuzz: op %d: %s: got %lld (0x%llx), want %lld (0x%llx)\n",
          op, what, static_cast<long long>(got),
          static_cast<unsigned long long>(got), static_cast<long long>(want),
          static_cast<unsigned long long>(want));
  abort();
}

void Expect(int op, const char* what, int64_t got, int64_t want) {
  if (got != want) Fail(op, what, got, want);
}

// Reads the input front to back; past its end every byte is 0.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool done() const { return pos_ >= size_; }
  uint8_t Byte() { return pos_ < size_ ? data_[pos_++] : 0; }
  uint32_t Word() {
    uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v = v * 256 + Byte();
    return v;
  }
  // Bit counts: mostly 0..32, sometimes values outside, whose results the
  // shift rule defines.
  int32_t ReadCount() {
    static const int32_t kOdd[16] = {-1, -8,  -31, -32, -33, 33,   40,   63,
                                     64, 255, 256, 257, 288, -224, -256, 1000};
    const uint8_t b = Byte();
    return b >= 240 ? kOdd[b - 240] : b % 33;
  }
  // Writer counts stay within 40 so that a write's reach stays in the slack.
  int32_t WriteCount() {
    static const int32_t kOdd[8] = {-1, -8, -32, 33, 34, 36, 39, 40};
    const uint8_t b = Byte();
    return b >= 248 ? kOdd[b - 248] : b % 33;
  }
  int32_t ByteCount() {
    static const int32_t kOdd[8] = {-1, -100, 5, 6, 8, 100, 1 << 20, INT32_MAX};
    const uint8_t b = Byte();
    return b >= 248 ? kOdd[b - 248] : b % 6;
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t pos_ = 0;
};

// The shift rule on plain integers: the amount counts modulo 256, and 32 or
// more positions leave nothing.
int64_t Amount(int64_t a) { return ((a % 256) + 256) % 256; }

uint32_t ShiftLeft(uint64_t v, int64_t a) {
  const int64_t e = Amount(a);
  return e >= 32 ? 0 : static_cast<uint32_t>((v << e) & 0xFFFFFFFFu);
}

uint32_t ShiftRight(uint64_t v, int64_t a) {
  const int64_t e = Amount(a);
  return e >= 32 ? 0 : static_cast<uint32_t>((v & 0xFFFFFFFFu) >> e);
}

int64_t FloorDiv8(int64_t v) { return v >= 0 ? v / 8 : -((-v + 7) / 8); }

using Cells = std::array<int, 32>;

// Drops the first a cells (the cache shifted toward its reading end).
void Drop(Cells& c, int64_t a) {
  const int64_t e = Amount(a);
  for (int i = 0; i < 32; ++i) c[i] = (e < 32 && i + e < 32) ? c[i + e] : 0;
}

// The first `w` cells as a number, first cell most or least significant.
uint32_t FirstCells(const Cells& c, int64_t w, bool lsb) {
  uint64_t v = 0;
  for (int64_t i = 0; i < w; ++i) {
    v |= static_cast<uint64_t>(c[i]) << (lsb ? i : w - 1 - i);
  }
  return static_cast<uint32_t>(v);
}

// Width kept by a right shift of a full word by a (32 - width for 0..32).
int64_t KeptWidth(int64_t a) {
  const int64_t e = Amount(a);
  return e >= 32 ? 0 : 32 - e;
}

// The reader's test refill: the library's own refill with a limited count, or
// a refusal that leaves the record alone. Logs each count it is asked for.
struct RefillHook {
  bool lsb = false;
  int32_t limit = 0;
  bool refuse = false;
  std::vector<int32_t> log;
};
RefillHook g_hook;

int32_t TestRefill(kcmn_bsr* bsr, int32_t count) {
  g_hook.log.push_back(count);
  if (g_hook.refuse) return 5;
  const int32_t c = count < g_hook.limit ? count : g_hook.limit;
  return g_hook.lsb ? kcmn_bsr_le_flush(bsr, c) : kcmn_bsr_flush(bsr, c);
}

struct ByteEvent {
  int64_t offset;
  int32_t bits_free;
};
std::vector<ByteEvent> g_bytes_done;

void OnByte(kcmn_bsw* bsw) {
  g_bytes_done.push_back(
      {static_cast<int64_t>(reinterpret_cast<uintptr_t>(bsw->cur) -
                            reinterpret_cast<uintptr_t>(bsw->start)),
       bsw->bits_free});
}

int64_t Offset(const void* p, const void* base) {
  return static_cast<int64_t>(reinterpret_cast<uintptr_t>(p) -
                              reinterpret_cast<uintptr_t>(base));
}

class ReaderModel {
 public:
  // mode: 0 refill argument NULL (most-significant first only), 1 the
  // library refill passed explicitly, 2..6 test refill limited to 0..4
  // bytes, 7 test refill that refuses.
  void Init(const uint8_t* data, size_t size, bool lsb, int mode,
            bool null_buffer) {
    lsb_ = lsb;
    if (null_buffer) {
      buf_.reset();
      size = 0;
    } else {
      buf_.reset(new uint8_t[size]);  // exact size, also for 0 bytes
      if (size != 0) memcpy(buf_.get(), data, size);
    }
    size_ = static_cast<int64_t>(size);
    bytes_.assign(data, data + size);
    pos_ = 0;
    count_ = 0;
    cells_.fill(0);
    custom_ = mode >= 2;
    kcmn_bsr_refill_fn fn = nullptr;
    if (mode == 1 || (mode == 0 && lsb))
      fn = lsb ? kcmn_bsr_le_flush : kcmn_bsr_flush;
    if (custom_) fn = TestRefill;
    expect_fn_ = fn != nullptr ? fn : kcmn_bsr_flush;
    g_hook.lsb = lsb;
    g_hook.limit = mode - 2;
    g_hook.refuse = mode == 7;
    g_hook.log.clear();
    log_.clear();
    kcmn_bsr_init(&bsr_, buf_.get(), static_cast<uint32_t>(size), fn);
  }

  bool lsb() const { return lsb_; }

  void Step(int op, uint8_t kind, Input& in) {
    if (lsb_) {
      StepLsb(op, kind, in);
    } else {
      StepMsb(op, kind, in);
    }
    CheckRecord(op);
  }

 private:
  // ---- model of the refills
  int32_t Load(int64_t count) {
    const int64_t k = count < size_ - pos_ ? count : size_ - pos_;
    if (k < 1) {
      cells_.fill(0);
      count_ = 0;
      return -1;
    }
    cells_.fill(0);
    for (int64_t i = 0; i < k && i < 4; ++i) {
      for (int j = 0; j < 8; ++j) {
        const int shift = lsb_ ? j : 7 - j;
        cells_[8 * i + j] = (bytes_[pos_ + i] >> shift) & 1;
      }
    }
    count_ = 8 * k;
    pos_ += k;
    return 0;
  }

  // A call through the record's refill pointer.
  int32_t Refill(int64_t count) {
    if (!custom_) return Load(count);
    log_.push_back(static_cast<int32_t>(count));
    if (g_hook.refuse) return 5;
    return Load(count < g_hook.limit ? count : g_hook.limit);
  }

  uint32_t Word() const {
    uint32_t w = 0;
    for (int i = 0; i < 32; ++i) {
      w |= static_cast<uint32_t>(cells_[i]) << (lsb_ ? i : 31 - i);
    }
    return w;
  }

  // The cache shifted right by a, most-significant-first order.
  uint32_t Top(const Cells& c, int64_t a) const {
    return FirstCells(c, KeptWidth(a), false);
  }

  // ---- most significant first
  uint32_t Read(int64_t n) {
    if (count_ >= n) {
      const uint32_t v = Top(cells_, 32 - n);
      Drop(cells_, n);
      count_ -= n;
      return v;
    }
    const Cells old = cells_;
    const int64_t b = count_;
    if (Refill(4) != 0) return kFail;
    const int64_t m = n - b;
    const uint32_t v = Top(old, 32 - n) | Top(cells_, 32 - m);
    Drop(cells_, m);
    count_ -= m;
    return v;
  }

  bool Read1(uint32_t* bit) {
    if (count_ == 0 && Refill(4) != 0) return false;
    count_ -= 1;
    *bit = static_cast<uint32_t>(cells_[0]);
    Drop(cells_, 1);
    return true;
  }

  bool Skip(int64_t n, int32_t* status) {
    if (count_ < n) {
      const int64_t b = count_;
      *status = Refill(4);
      if (*status != 0) return false;
      n -= b;
    }
    count_ -= n;
    Drop(cells_, n);
    return true;
  }

  uint32_t Peek(int64_t n) {
    const int64_t b = count_;
    if (b < n) {
      const int64_t k = FloorDiv8(32 - b);
      if (k != 0) {
        const Cells old = cells_;
        Refill(k);
        const int64_t at = Amount(b);
        Cells merged = old;
        for (int i = 0; i < 32; ++i) {
          if (at < 32 && i >= at) merged[i] |= cells_[i - at];
        }
        cells_ = merged;
        count_ += b;
      }
    }
    const uint32_t v = Top(cells_, 32 - n);
    if (n <= count_) return v;
    if (pos_ < size_) return v | ShiftRight(bytes_[pos_], 8 - (n - count_));
    return v;
  }

  void StepMsb(int op, uint8_t kind, Input& in) {
    switch (kind % 8) {
      case 0: {
        const int32_t n = in.ReadCount();
        Expect(op, "read", kcmn_bsr_read(&bsr_, n), Read(n));
        break;
      }
      case 1: {
        uint32_t bit = 0;
        const uint32_t want = Read1(&bit) ? bit : kFail;
        Expect(op, "read1", kcmn_bsr_read1(&bsr_), want);
        break;
      }
      case 2: {
        uint32_t bit = 0;
        uint8_t got = 0xEE;
        const bool ok = Read1(&bit);
        Expect(op, "read1_value status", kcmn_bsr_read1_value(&bsr_, &got),
               ok ? 0 : -1);
        Expect(op, "read1_value bit", got, ok ? bit : 0xEE);
        break;
      }
      case 3: {
        const int32_t n = in.ReadCount();
        int32_t status = 0;
        const uint32_t want =
            Skip(n, &status) ? Word() : static_cast<uint32_t>(status);
        Expect(op, "skip", kcmn_bsr_skip(&bsr_, n), want);
        break;
      }
      case 4: {
        const int32_t n = in.ReadCount();
        Expect(op, "peek", kcmn_bsr_peek(&bsr_, n), Peek(n));
        break;
      }
      case 5: {
        const int32_t s = in.ReadCount();
        const int32_t n = in.ReadCount();
        int32_t status = 0;
        uint32_t want = 0;
        if (Skip(s, &status))
          want = count_ >= n ? Top(cells_, 32 - n) : Peek(n);
        Expect(op, "skip_peek", kcmn_bsr_skip_peek(&bsr_, s, n), want);
        break;
      }
      case 6: {
        const int64_t r = ((count_ % 8) + 8) % 8;
        Drop(cells_, r);
        count_ -= r;
        kcmn_bsr_skip_to_align8(&bsr_);
        break;
      }
      default: {
        const int32_t c = in.ByteCount();
        Expect(op, "flush", kcmn_bsr_flush(&bsr_, c), Load(c));
      }
    }
  }

  // ---- least significant first
  uint32_t LeRead(int64_t n) {
    uint32_t low = 0;
    int64_t s = 0, m = n;
    if (count_ < n) {
      const Cells old = cells_;
      const int64_t b = count_;
      if (Refill(4) != 0) return kFail;
      low = FirstCells(old, KeptWidth(32 - b), true);
      m = n - b;
      s = b;
    }
    const Cells v = cells_;
    if (m == 32) {
      count_ = 0;
      cells_.fill(0);
    } else {
      count_ -= m;
      Drop(cells_, m);
    }
    return low | ShiftLeft(FirstCells(v, KeptWidth(32 - m), true), s);
  }

  void StepLsb(int op, uint8_t kind, Input& in) {
    switch (kind % 5) {
      case 0:
      case 1: {
        const int32_t n = in.ReadCount();
        Expect(op, "le_read", kcmn_bsr_le_read(&bsr_, n), LeRead(n));
        break;
      }
      case 2: {
        const int32_t n = in.ReadCount();
        if (n == 32) {
          cells_.fill(0);
          count_ = 0;
        } else {
          Drop(cells_, n);
          count_ -= n;
        }
        kcmn_bsr_le_skip(&bsr_, n);
        break;
      }
      case 3: {
        const int64_t r = ((count_ % 8) + 8) % 8;
        Drop(cells_, r);
        count_ -= r;
        kcmn_bsr_le_skip_to_align8(&bsr_);
        break;
      }
      default: {
        const int32_t c = in.ByteCount();
        Expect(op, "le_flush", kcmn_bsr_le_flush(&bsr_, c), Load(c));
      }
    }
  }

  void CheckRecord(int op) {
    Expect(op, "cache", bsr_.cache, Word());
    Expect(op, "bits_left", bsr_.bits_left, count_);
    Expect(op, "cur", Offset(bsr_.cur, buf_.get()), pos_);
    Expect(op, "last", Offset(bsr_.last, buf_.get()), size_ - 1);
    Expect(op, "start", Offset(bsr_.start, buf_.get()), 0);
    Expect(op, "size", bsr_.size, size_);
    Expect(op, "refill", bsr_.refill == expect_fn_, 1);
    Expect(op, "refill calls", static_cast<int64_t>(g_hook.log.size()),
           static_cast<int64_t>(log_.size()));
    for (size_t i = 0; i < log_.size(); ++i) {
      Expect(op, "refill count", g_hook.log[i], log_[i]);
    }
  }

  kcmn_bsr bsr_{};
  std::unique_ptr<uint8_t[]> buf_;
  std::vector<uint8_t> bytes_;
  int64_t size_ = 0;
  bool lsb_ = false;
  bool custom_ = false;
  kcmn_bsr_refill_fn expect_fn_ = nullptr;
  int64_t pos_ = 0;
  int64_t count_ = 0;
  Cells cells_{};
  std::vector<int32_t> log_;
};

class WriterModel {
 public:
  void Init(Input& in, bool null_buffer) {
    const uint8_t cfg = in.Byte();
    size_ = null_buffer ? 0 : cfg % 17;
    const bool hook = (cfg & 0x80) != 0;
    const size_t total = static_cast<size_t>(size_) + kSlack;
    mem_.reset(new uint8_t[total]);
    want_.resize(total);
    for (size_t i = 0; i < total; ++i) want_[i] = mem_[i] = in.Byte();
    cur_ = 0;
    free_ = 8;
    log_.clear();
    g_bytes_done.clear();
    on_byte_ = hook ? OnByte : nullptr;
    base_ = null_buffer ? nullptr : mem_.get();
    kcmn_bsw_init(&bsw_, base_, static_cast<uint32_t>(size_), on_byte_);
  }

  void Step(int op, uint8_t kind, Input& in) {
    if (kind & 1) {
      const uint32_t bit = in.Byte();
      int32_t want = -1;
      if (cur_ < size_) {
        Put(bit & 1);
        want = 0;
      }
      Expect(op, "write1", kcmn_bsw_write1(&bsw_, bit), want);
    } else {
      const uint32_t value = in.Word();
      const int32_t n = in.WriteCount();
      int32_t want = -1;
      if (cur_ < size_) {
        // The n bits of the value's low end, then zeros past 32 positions.
        const uint32_t aligned = ShiftLeft(value, 32 - static_cast<int64_t>(n));
        for (int64_t j = 0; j < n; ++j)
          Put(j < 32 ? (aligned >> (31 - j)) & 1 : 0);
        want = 0;
      }
      Expect(op, "write", kcmn_bsw_write(&bsw_, value, n), want);
    }
    Check(op);
  }

 private:
  void Put(uint32_t bit) {
    uint8_t& byte = want_.at(static_cast<size_t>(cur_));
    byte = static_cast<uint8_t>(((byte << 1) | bit) & 0xFF);
    if (--free_ == 0) {
      if (on_byte_ != nullptr) log_.push_back({cur_, 0});
      free_ = 8;
      ++cur_;
    }
  }

  void Check(int op) {
    if (base_ != nullptr) {
      for (size_t i = 0; i < want_.size(); ++i) {
        if (mem_[i] != want_[i]) {
          fprintf(stderr, "bitstream_fuzz: writer byte at offset %zu\n", i);
          Fail(op, "writer byte", mem_[i], want_[i]);
        }
      }
    }
    const uint8_t* base = base_;
    Expect(op, "writer cur", Offset(bsw_.cur, base), cur_);
    Expect(op, "bits_free", bsw_.bits_free, free_);
    Expect(op, "writer last", Offset(bsw_.last, base), size_ - 1);
    Expect(op, "writer start", Offset(bsw_.start, base), 0);
    Expect(op, "writer size", bsw_.size, size_);
    Expect(op, "on_byte", bsw_.on_byte == on_byte_, 1);
    Expect(op, "on_byte calls", static_cast<int64_t>(g_bytes_done.size()),
           static_cast<int64_t>(log_.size()));
    for (size_t i = 0; i < log_.size(); ++i) {
      Expect(op, "on_byte offset", g_bytes_done[i].offset, log_[i].offset);
      Expect(op, "on_byte bits_free", g_bytes_done[i].bits_free, 0);
    }
  }

  kcmn_bsw bsw_{};
  std::unique_ptr<uint8_t[]> mem_;
  uint8_t* base_ = nullptr;
  std::vector<uint8_t> want_;
  int64_t size_ = 0;
  int64_t cur_ = 0;
  int64_t free_ = 8;
  kcmn_bsw_byte_fn on_byte_ = nullptr;
  std::vector<ByteEvent> log_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input in(data, size);
  std::vector<uint8_t> stream(in.Byte() % 40);
  for (auto& b : stream) b = in.Byte();

  ReaderModel reader;
  reader.Init(stream.data(), stream.size(), false, 0, false);
  WriterModel writer;
  writer.Init(in, false);

  for (int op = 0; op < kMaxOps && !in.done(); ++op) {
    const uint8_t kind = in.Byte();
    switch (kind % 16) {
      case 11: {  // restart the reader: bit order, refill, size, null buffer
        const uint8_t cfg = in.Byte();
        const size_t n = in.Byte() % (stream.size() + 1);
        reader.Init(stream.data(), n, (cfg & 1) != 0, (cfg >> 1) % 8,
                    n == 0 && (cfg & 0x80) != 0);
        break;
      }
      case 12:
      case 13:
      case 14:
        writer.Step(op, kind >> 4, in);
        break;
      case 15:
        writer.Init(in, (kind & 0x10) != 0);
        break;
      default:
        reader.Step(op, kind >> 4, in);
    }
  }
  return 0;
}
