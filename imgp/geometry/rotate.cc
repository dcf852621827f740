// Rotation by quarter turns and flips: kimgp_rot, its kernel tables and the
// plane kernels.
