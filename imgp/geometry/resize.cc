// kimgp_rsz and the per-layout resizers.
