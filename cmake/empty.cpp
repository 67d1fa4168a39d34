// Keeps a subsystem library valid while its folder has no sources yet.
