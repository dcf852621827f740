// Quality of the DCT-domain downscaler: luma PSNR against a float Lanczos-3
// downscale of the same frame, beside libyuv's box filter, with a block-seam
// index and the mean level. A measurement program, not a test.
//
//   kelo_dct_quality [FILE.gray WxH]    8-bit gray frame (e.g. from ffmpeg
//                                       -pix_fmt gray -f rawvideo); without
//                                       arguments a 1920x1080 zone plate
#include <libyuv/scale.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "kimgp_dctrsz.h"

namespace {

struct Gray {
  int w = 0, h = 0;
  std::vector<uint8_t> px;
};

// Separable float Lanczos-3, the kernel widened by the ratio (area
// antialiasing), centres aligned.
// One pass over a w x h plane to n_out samples along rows (horizontal) or
// columns.
std::vector<float> Lanczos(const std::vector<float>& in, int w, int h, int n_out, bool horizontal) {
  const int n_in = horizontal ? w : h;
  const int lines = horizontal ? h : w;
  const int dh = horizontal ? h : n_out;
  const int ow = horizontal ? n_out : w;
  std::vector<float> out(static_cast<size_t>(ow) * dh);
  const double r = static_cast<double>(n_in) / n_out;
  const double s = r > 1 ? r : 1;
  for (int o = 0; o < n_out; ++o) {
    const double c = (o + 0.5) * r - 0.5;
    const int lo = static_cast<int>(std::floor(c - 3 * s)), hi = static_cast<int>(std::ceil(c + 3 * s));
    std::vector<double> wts;
    double sum = 0;
    for (int i = lo; i <= hi; ++i) {
      const double x = (i - c) / s;
      double k = 0;
      if (std::fabs(x) < 1e-9) {
        k = 1;
      } else if (std::fabs(x) < 3) {
        k = 3 * std::sin(M_PI * x) * std::sin(M_PI * x / 3) / (M_PI * M_PI * x * x);
      }
      wts.push_back(k);
      sum += k;
    }
    for (int l = 0; l < lines; ++l) {
      double acc = 0;
      for (int i = lo; i <= hi; ++i) {
        const int ii = i < 0 ? 0 : (i >= n_in ? n_in - 1 : i);
        const float v = horizontal ? in[static_cast<size_t>(l) * w + ii] : in[static_cast<size_t>(ii) * w + l];
        acc += wts[i - lo] * v;
      }
      const float v = static_cast<float>(acc / sum);
      if (horizontal) {
        out[static_cast<size_t>(l) * ow + o] = v;
      } else {
        out[static_cast<size_t>(o) * ow + l] = v;
      }
    }
  }
  return out;
}

std::vector<float> Reference(const Gray& g, int dw, int dh) {
  std::vector<float> f(g.px.begin(), g.px.end());
  const std::vector<float> hpass = Lanczos(f, g.w, g.h, dw, true);
  return Lanczos(hpass, dw, g.h, dh, false);
}

double Psnr(const std::vector<float>& ref, const uint8_t* p, int stride, int w, int h) {
  double se = 0;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      double r = ref[static_cast<size_t>(y) * w + x];
      r = r < 0 ? 0 : (r > 255 ? 255 : r);
      const double d = r - p[static_cast<size_t>(y) * stride + x];
      se += d * d;
    }
  }
  const double mse = se / (static_cast<double>(w) * h);
  return 10 * std::log10(255.0 * 255.0 / (mse > 1e-12 ? mse : 1e-12));
}

// Mean |horizontal and vertical steps| across 4-pixel block edges over the
// mean elsewhere: 1 without seams.
double SeamIndex(const uint8_t* p, int stride, int w, int h) {
  double at = 0, off = 0;
  long n_at = 0, n_off = 0;
  for (int y = 0; y < h; ++y) {
    for (int x = 1; x < w; ++x) {
      const double d = std::abs(p[y * stride + x] - p[y * stride + x - 1]);
      if (x % 4 == 0) at += d, ++n_at; else off += d, ++n_off;
    }
  }
  for (int y = 1; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const double d = std::abs(p[y * stride + x] - p[(y - 1) * stride + x]);
      if (y % 4 == 0) at += d, ++n_at; else off += d, ++n_off;
    }
  }
  return (at / n_at) / (off / n_off);
}

double Mean(const uint8_t* p, int stride, int w, int h) {
  double s = 0;
  for (int y = 0; y < h; ++y) for (int x = 0; x < w; ++x) s += p[y * stride + x];
  return s / (static_cast<double>(w) * h);
}

struct Yuv {
  Yuv(int w, int h) : w(w), h(h), cw((w + 1) / 2), ch((h + 1) / 2), y(w * h), u(cw * ch, 128), v(cw * ch, 128) {
    std::memset(&img, 0, sizeof(img));
    img.cs = KIMGP_CS_YUV420;
    img.width[0] = img.stride[0] = w;
    img.height[0] = img.buf_height[0] = h;
    for (int i = 1; i < 3; ++i) {
      img.width[i] = img.stride[i] = cw;
      img.height[i] = img.buf_height[i] = ch;
    }
    img.plane[0] = y.data();
    img.plane[1] = u.data();
    img.plane[2] = v.data();
  }
  int w, h, cw, ch;
  std::vector<uint8_t> y, u, v;
  kimgp_img img;
};

void Measure(const char* name, const Gray& g, double ratio) {
  const int dw = static_cast<int>(g.w / ratio + 0.5), dh = static_cast<int>(g.h / ratio + 0.5);
  Yuv src(g.w, g.h), box(dw, dh), dct(dw, dh);
  src.y = g.px;
  src.img.plane[0] = src.y.data();
  libyuv::I420Scale(src.y.data(), g.w, src.u.data(), src.cw, src.v.data(), src.cw, g.w, g.h,
                    box.y.data(), dw, box.u.data(), box.cw, box.v.data(), box.cw, dw, dh,
                    libyuv::kFilterBox);
  kimgp_img io[2] = {src.img, dct.img};
  kimgp_rsz_new_ctx ctx;
  int16_t ***vm, ***hm;
  if (kimgp_rsz_new_init(io, &ctx, &vm, &hm, 0) != 0 || kimgp_rsz_new(io, &ctx, vm, hm) != 0) {
    std::fprintf(stderr, "kimgp_rsz_new failed\n");
    std::exit(1);
  }
  kimgp_rsz_new_deinit(io, &ctx, vm, hm);
  const std::vector<float> ref = Reference(g, dw, dh);
  double ref_mean = 0;
  for (float f : ref) ref_mean += f;
  ref_mean /= ref.size();
  // The top-left quarter, where a drift of the block geometry against the
  // exact ratio (from the extension of sizes that are not multiples of 4)
  // is smallest.
  const int qw = dw / 2, qh = dh / 2;
  std::vector<float> ref_q(static_cast<size_t>(qw) * qh);
  for (int y = 0; y < qh; ++y) {
    for (int x = 0; x < qw; ++x) ref_q[static_cast<size_t>(y) * qw + x] = ref[static_cast<size_t>(y) * dw + x];
  }
  std::printf("%-12s %4dx%-4d -> %4dx%-4d (%.1fx)  PSNR dct %6.2f dB  box %6.2f dB  "
              "(top-left quarter: dct %6.2f box %6.2f)  seams dct %.3f box %.3f   "
              "mean ref %.2f dct %.2f box %.2f\n",
              name, g.w, g.h, dw, dh, ratio, Psnr(ref, dct.y.data(), dw, dw, dh),
              Psnr(ref, box.y.data(), dw, dw, dh), Psnr(ref_q, dct.y.data(), dw, qw, qh),
              Psnr(ref_q, box.y.data(), dw, qw, qh), SeamIndex(dct.y.data(), dw, dw, dh),
              SeamIndex(box.y.data(), dw, dw, dh), ref_mean, Mean(dct.y.data(), dw, dw, dh),
              Mean(box.y.data(), dw, dw, dh));
}

}  // namespace

int main(int argc, char** argv) {
  Gray g;
  const char* name = "zone plate";
  if (argc == 3) {
    name = argv[1];
    if (std::sscanf(argv[2], "%dx%d", &g.w, &g.h) != 2 || g.w < 8 || g.h < 8) return 2;
    g.px.resize(static_cast<size_t>(g.w) * g.h);
    FILE* f = std::fopen(argv[1], "rb");
    if (f == nullptr || std::fread(g.px.data(), 1, g.px.size(), f) != g.px.size()) return 2;
    std::fclose(f);
    const char* slash = std::strrchr(name, '/');
    if (slash != nullptr) name = slash + 1;
  } else {
    g.w = 1920;
    g.h = 1080;
    g.px.resize(static_cast<size_t>(g.w) * g.h);
    // Local frequency grows to the Nyquist limit at the left and right edges.
    const double k = M_PI / (2.0 * (g.w / 2));
    for (int y = 0; y < g.h; ++y) {
      for (int x = 0; x < g.w; ++x) {
        const double dx = x - g.w / 2, dy = y - g.h / 2;
        g.px[static_cast<size_t>(y) * g.w + x] =
            static_cast<uint8_t>(std::lround(127.5 + 127 * std::cos(k * (dx * dx + dy * dy))));
      }
    }
  }
  for (double r : {1.5, 2.0, 2.5}) Measure(name, g, r);
  return 0;
}
