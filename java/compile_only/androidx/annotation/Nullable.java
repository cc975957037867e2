package androidx.annotation;

import java.lang.annotation.Documented;
import java.lang.annotation.Retention;
import java.lang.annotation.RetentionPolicy;

/**
 * A parameter or result that may be null.
 *
 * <p>A stand-in for compiling only, in no jar: class files then carry the annotation's name, by which
 * Kotlin and Android's tools know it, with or without a class of that name. They ignore annotations
 * of other packages.
 */
@Documented
@Retention(RetentionPolicy.CLASS)
public @interface Nullable {}
