extern "C" int noFactoryHere() { return 0; }
