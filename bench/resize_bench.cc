// Resize rows beside libyuv.
