// Lies beside the text that includes it.
constexpr int s_inner = 1;
