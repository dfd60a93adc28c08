// What the leak checker is told about this program.

#if defined(__SANITIZE_ADDRESS__)
extern "C" const char* __lsan_default_suppressions();  // NOLINT(bugprone-reserved-identifier)

/// Cairo keeps the fonts that it used, and with them patterns of Fontconfig, whose pointers to
/// their own parts are written as distances: the checker does not see them.
extern "C" const char* __lsan_default_suppressions() {  // NOLINT(bugprone-reserved-identifier)
  return "leak:libfontconfig";
}
#endif
