// Exports what nobody asked for, has an address to be relocated in its code, and is too large.
__attribute__((visibility("default"))) void notInTheList() {}

__attribute__((visibility("default"))) extern const char large[];
const char large[500'000] = {1};

asm(".text\n.quad large\n");
