namespace {

int* volatile nothing = nullptr;

// Faults while the loader still holds its lock.
struct FaultyStart {
  FaultyStart() { *nothing = 1; }
};

const FaultyStart kFaultyStart;

}  // namespace
