/* A program built against an installed libkelocmn. */
#include <kimgp_copy.h>
#include <stdio.h>

int main(void) {
  unsigned char src[8] = {9, 8, 7, 6, 5, 4, 3, 2}, dst[8] = {0};
  kimgp_cpy_8b(src, 4, 2, 4, 4, dst);
  printf("%d %d\n", dst[0], dst[7]);
  return dst[0] == 9 && dst[7] == 2 ? 0 : 1;
}
