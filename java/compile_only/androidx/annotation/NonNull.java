package androidx.annotation;

import java.lang.annotation.Documented;
import java.lang.annotation.Retention;
import java.lang.annotation.RetentionPolicy;

/**
 * A parameter that must not be null, a result that never is.
 *
 * <p>A stand-in for compiling only, in no jar: class files then carry the annotation's name, by which
 * Kotlin and Android's tools know it, with or without a class of that name. They ignore annotations
 * of other packages.
 */
@Documented
@Retention(RetentionPolicy.CLASS)
public @interface NonNull {}
