// Rotation rows beside libyuv.
