extern "C" [[gnu::visibility("default")]] int NotAnEntryPoint() {
    return 0;
}
