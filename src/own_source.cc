// Deliberately without code. Libraries that consist of other targets' objects compile it, because
// Xcode makes no library of objects alone.
