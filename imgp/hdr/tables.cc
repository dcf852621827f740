// Exported constants and decoding tables of the tone mapper.
#include "common/internal/api.h"
#include "kimgp_hdr.h"

#include "imgp/hdr/decode_tables.inc"

KELO_EXPORT const double m1 = 0.1593017578125;
KELO_EXPORT const double m2 = 78.84375;
KELO_EXPORT const double c1 = 0.8359375;
KELO_EXPORT const double c2 = 18.8515625;
KELO_EXPORT const double c3 = 18.6875;

KELO_EXPORT const int16_t LUT_Y10[1024] = {KELO_HDR_LUT_Y10};
KELO_EXPORT const int16_t LUT_R_CR10[1024] = {KELO_HDR_LUT_R_CR10};
KELO_EXPORT const int16_t LUT_B_CB10[1024] = {KELO_HDR_LUT_B_CB10};
KELO_EXPORT const int16_t LUT_G_CB10[1024] = {KELO_HDR_LUT_G_CB10};
KELO_EXPORT const int16_t LUT_G_CR10[1024] = {KELO_HDR_LUT_G_CR10};
