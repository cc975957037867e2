// Exports an unlisted name, has an address in its code that needs relocation, and is too large.
__attribute__((visibility("default"))) void notInTheList() {}

__attribute__((visibility("default"))) extern const char large[];
const char large[500'000] = {1};

asm(".text\n.quad large\n");
