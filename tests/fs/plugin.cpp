// What the tests of dynamic libraries load.
extern "C" int pluginAnswer() {
    return 42;
}
