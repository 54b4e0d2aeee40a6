// Nothing: the compiled headers of tests belong to a target, and a target has a source.
