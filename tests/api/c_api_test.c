/* Includes every public header as C99 and calls one function of each. */
#include <kcmn_mem.h>
#include <kimgp_copy.h>
#include <kimgp_img.h>

#include <stddef.h>
#include <stdio.h>

int main(void) {
  unsigned char src[16] = {1, 2, 3, 4}, dst[16] = {0};
  kimgp_img a = {{4}, {1}, {4}, {1}, {NULL}, {0}, KIMGP_CS_YUV400, 0, 0, 0, 0, 0, 0, {0}};
  kimgp_img b = a;
  void *p;
  a.plane[0] = src;
  b.plane[0] = dst;
  if (kimgp_cpy(&a, &b) != KIMGP_OK || dst[3] != 4) return 1;
  p = kcmn_malloc_align32(100);
  if (p == NULL || ((size_t)p & 31u) != 0) return 2;
  kcmn_mfree_align32(p);
  if (kcmn_ceil_log2(5) != 3) return 3;
  puts("C API ok");
  return 0;
}
